// Parts whose mesh has faults of single triangles, as real meshes do:
// what is no solution is told, and where to mend.
#include <gmock/gmock.h>

#include <functional>

#include "part_maker.h"
#include "places.h"
#include "support/job.h"

namespace keld::testing_support {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* no_solution = " !! Warning !!  The displacements of this pass are no solution: ";

struct Ended {
  ScratchJob::Outcome outcome;
  std::string report, log;
};

Ended runOf(const part_maker::Mesh& mesh, int solverChoice) {
  const ScratchJob job;
  part_maker::writeJob(job.base(), mesh, {.solverChoice = solverChoice, .cycleLimit = 200});
  std::filesystem::create_directory_symlink(places::install, job.folder() / "install");
  Ended end;
  end.outcome = job.run("OMP_NUM_THREADS=1");
  end.report = job.read(".WD1");
  end.log = job.read(".WLG1");
  return end;
}

/// A corner of triangle 101 moved on the side across until its height is `ratio` of that side.
void flatten(part_maker::Mesh& mesh, double ratio) {
  const auto& [a, b, c] = mesh.triangles[100];
  auto& p = mesh.node(c);
  for (std::size_t i = 0; i < 3; ++i) {
    const double middle = 0.5 * (mesh.node(a)[i] + mesh.node(b)[i]);
    p[i] = middle + ratio * (p[i] - middle);
  }
}

/// A triangle on an edge of the part whose third node, which belongs to no other, lies at a corner.
void addEmptyTriangle(part_maker::Mesh& mesh) {
  const auto [a, b, c] = mesh.triangles[0];
  mesh.nodes.push_back(mesh.node(a));
  mesh.triangles.push_back({a, b, static_cast<int>(mesh.nodes.size()) - 1});
  mesh.zone.push_back(mesh.zone[0]);
  mesh.thickness.push_back(mesh.thickness[0]);
}

struct Spoiled {
  const char* name;
  std::function<void(part_maker::Mesh&)> spoil;
};

class WithoutSolution : public testing::TestWithParam<Spoiled> {};

TEST_P(WithoutSolution, IsToldInReportAndLogAndOnTheConsole) {
  part_maker::Mesh mesh = part_maker::makeMesh({.triangles = 200});
  EXPECT_THAT(runOf(mesh, 1).report, Not(HasSubstr("no solution")));
  GetParam().spoil(mesh);

  const Ended end = runOf(mesh, 1);

  EXPECT_EQ(end.outcome.status, 0) << "the run goes on";
  EXPECT_THAT(end.report, HasSubstr(no_solution));
  EXPECT_THAT(end.outcome.console, HasSubstr(no_solution));
  EXPECT_THAT(end.log,
              HasSubstr("not converged\n   The displacements of this pass are no solution: relative"));
}

// The library ends the first with code 40, the second with -852.
TEST(SpoiledMesh, AForgottenThicknessLeavesAShortReport) {
  part_maker::Mesh mesh = part_maker::makeMesh({.triangles = 2000});
  std::fill(mesh.thickness.begin() + 1, mesh.thickness.end(), 0.0);
  const Ended end = runOf(mesh, 2);
  EXPECT_LT(end.report.size(), 50000u) << "some 10 MB if every message were written";
  EXPECT_THAT(end.report, HasSubstr(" further messages D5016 were counted"));
  EXPECT_THAT(end.report, HasSubstr(" further messages D4016 were counted"));
}

INSTANTIATE_TEST_SUITE_P(Meshes, WithoutSolution,
                         testing::Values(Spoiled{"EmptyTriangle", addEmptyTriangle},
                                         Spoiled{"Needle", [](auto& mesh) { flatten(mesh, 1e-7); }}),
                         [](const auto& mesh) { return std::string(mesh.param.name); });

}  // namespace
}  // namespace keld::testing_support
