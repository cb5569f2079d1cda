// The program as an application starts it: golden files, odd surroundings, parts that have no answer.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "part_maker.h"
#include "places.h"
#include "support/job.h"

namespace keld::testing_support {
namespace {

ScratchJob caseJob(const std::string& name, const std::string& stem = "job") {
  ScratchJob job = ScratchJob::copyOf(places::cases / name, stem);
  job.chooseSolver(2);
  return job;
}

/// Replaces what differs from run to run: times, paths, the machine's processors.
std::string masked(std::string text) {
  for (const char* key :
       {"Date/time : ", "KELD/C-Style  ", "File path : ", "Number of processor= ", "run-time system= ",
        "of running process= ", "CPU Time     **  : ", "Recorded - "}) {
    for (std::size_t at = 0; (at = text.find(key, at)) != std::string::npos; at += 3) {
      at += std::string_view(key).size();
      text.replace(at, text.find('\n', at) - at, "...");
    }
  }
  return text;
}

/// The name of the files, the job, and what stands behind its own settings.
struct GoldenRun {
  const char *name, *job, *settings;
};

class Golden : public testing::TestWithParam<GoldenRun> {};

/// To make new ones after a wanted change: run with KELD_WRITE_GOLDEN=1 and look at the difference.
TEST_P(Golden, ReportAndResultsAreThoseOfTheFiles) {
  const GoldenRun& golden = GetParam();
  const ScratchJob job = caseJob(golden.job);
  job.write(".CPU", job.read(".CPU") + golden.settings);

  ASSERT_EQ(job.run().status, 0);

  for (const char* suffix : {".WD1", ".WR1"}) {
    const std::filesystem::path file = places::runs / (golden.name + std::string(suffix));
    const std::string found = masked(job.read(suffix));
    if (std::getenv("KELD_WRITE_GOLDEN") != nullptr) std::ofstream(file, std::ios::binary) << found;
    EXPECT_EQ(found, readText(file)) << suffix;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Files, Golden,
    testing::Values(GoldenRun{"ribbed-everything", "ribbed-everything", ""},
                    GoldenRun{"cup-refused-stress", "cup-refused-stress", ""},
                    GoldenRun{"ribbed-facets", "ribbed-everything",
                              "[Keld_Extension]\n\n\n  Wall model string= 31001  flag= 1  value= 2\n"}),
    [](const auto& run) {
      std::string word = run.param.name;
      std::replace(word.begin(), word.end(), '-', '_');
      return word;
    });

struct Surroundings {
  const char* name;
  const char* stem;
  const char* prefix;
  const char* redirection;
};

class WholeRun : public testing::TestWithParam<Surroundings> {};

TEST_P(WholeRun, GivesTheSameFilesAnywhere) {
  const ScratchJob plain = caseJob("box-filled"), odd = caseJob("box-filled", GetParam().stem);
  ASSERT_EQ(plain.run().status, 0);

  const ScratchJob::Outcome outcome = odd.run(GetParam().prefix, GetParam().redirection);

  ASSERT_EQ(outcome.status, 0) << outcome.console;
  EXPECT_EQ(masked(odd.read(".WR1")), masked(plain.read(".WR1")));
  EXPECT_EQ(masked(odd.read(".WD1")), masked(plain.read(".WD1")));
  EXPECT_THAT(odd.read(".WD1"), testing::HasSubstr(" File path : " + odd.base() + "\n"));
}

INSTANTIATE_TEST_SUITE_P(Surroundings, WholeRun,
                         testing::Values(Surroundings{"BlanksAndLetters", "Gehäuse № 5 ü", "", "</dev/null"},
                                         Surroundings{"ClosedInput", "job", "", "<&-"},
                                         Surroundings{"DecimalComma", "job", "LC_ALL=de_DE.UTF-8",
                                                      "</dev/null"},
                                         Surroundings{"OneThread", "job", "OMP_NUM_THREADS=1", "</dev/null"}),
                         [](const auto& where) { return std::string(where.param.name); });

// Nothing hangs and nothing is half-written where memory ends in reading,
// in a parallel region or in a library.
TEST(WholeRun, TooLittleMemoryEndsTheRun) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers map far more than any limit";
#endif
  const ScratchJob job = caseJob("ribbed-everything");
  int finished = 0;
  for (const int megabytes : {170, 240, 300, 330, 360, 400, 100000}) {
    job.remove(".WR1");
    const ScratchJob::Outcome outcome = job.run("ulimit -v " + std::to_string(megabytes * 1024) +
                                                "; OMP_NUM_THREADS=2 OPENBLAS_NUM_THREADS=2 timeout 20");
    EXPECT_THAT(outcome.status, testing::AnyOf(0, 1)) << megabytes << " MB: " << outcome.console;
    EXPECT_EQ(job.has(".WR1"), outcome.status == 0) << megabytes;
    finished += outcome.status == 0;
  }
  EXPECT_GE(finished, 1);
}

class InPieces : public testing::TestWithParam<int> {};

/// A part and a second one like it 200 mm further on: each distorts as it does alone.
TEST_P(InPieces, EachPieceIsHeldByItself) {
  part_maker::Mesh mesh = part_maker::makeMesh({.triangles = 600});
  const auto resultOf = [](const part_maker::Mesh& part) {
    const ScratchJob job;
    part_maker::writeJob(job.base(), part, {});
    std::filesystem::create_directory_symlink(places::install, job.folder() / "install");
    job.chooseSolver(GetParam());
    const ScratchJob::Outcome outcome = job.run("OMP_NUM_THREADS=1");
    EXPECT_EQ(outcome.status, 0) << outcome.console;
    return std::pair(resultBlock(job.read(".WR1"), "Keld_ResultsStr"), job.read(".WD1"));
  };
  const auto [alone, reportAlone] = resultOf(mesh);
  const int nodes = static_cast<int>(mesh.nodes.size());
  const std::size_t triangles = mesh.triangles.size();
  for (int n = 0; n < nodes; ++n)
    mesh.nodes.push_back({mesh.node(n)[0] + 200.0, mesh.node(n)[1], mesh.node(n)[2]});
  for (std::size_t e = 0; e < triangles; ++e) {
    const auto& corner = mesh.triangles[e];
    mesh.triangles.push_back({corner[0] + nodes, corner[1] + nodes, corner[2] + nodes});
    mesh.zone.push_back(mesh.zone[e]);
    mesh.thickness.push_back(mesh.thickness[e]);
  }
  const auto [both, report] = resultOf(mesh);

  EXPECT_THAT(report, testing::HasSubstr("!! Warning !!  The part is in 2 pieces"));
  EXPECT_THAT(reportAlone, testing::Not(testing::HasSubstr("pieces")));
  double difference = 0.0, largest = 0.0;
  for (int n = 1; n <= 2 * nodes; ++n)
    for (std::size_t c = 0; c < 3; ++c) {
      const double expected = alone[(n - 1) % nodes + 1][c];
      largest = std::max(largest, std::abs(expected));
      difference = std::max(difference, std::abs(both[n][c] - expected));
    }
  EXPECT_LE(difference, 1e-3 * largest) << "three digits stand in a row";
}

INSTANTIATE_TEST_SUITE_P(Solvers, InPieces, testing::Values(1, 2),
                         [](const auto& solver) { return solver.param == 2 ? "Direct" : "Multigrid"; });

}  // namespace
}  // namespace keld::testing_support
