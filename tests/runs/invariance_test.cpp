// What a moulding engineer takes for granted: formulas of flat plates, symmetry, and answers that don't
// depend on numbers, place and direction. Distances between nodes are compared,
// as they don't depend on the restraint.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>

#include "input/input_stage.h"
#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/model_tables.h"
#include "model/sink_mark.h"
#include "part_maker.h"
#include "places.h"
#include "results/result_rows.h"
#include "run/base/vector3.h"
#include "support/faults.h"

namespace keld::testing_support {
namespace {

/// By geometry node, cm; sorted by place, so that parts of different numbering can be compared.
struct DeformedPart {
  std::vector<Vector3> place, total, inMold;
  std::vector<double> sinkMark;

  std::size_t size() const { return place.size(); }
};

using Motion = std::function<Vector3(const Vector3&)>;
Vector3 unmoved(const Vector3& place) { return place; }

/// Names the nodes at three corners of the base as boundary nodes. Where walls meet at an angle the shared
/// nodes of their elements are offset along different normals, so that a turn isn't free of energy and the
/// shape depends on which nodes are held.
void holdCorners(const Column<Vector3>& place, const Motion& turnedBack) {
  const std::array<Vector3, 3> corner = {{{0, 0, 0}, {12, 0, 0}, {0, 8, 0}}};
  for (int n = 1; n <= place.rows(); ++n) {
    for (std::size_t c = 0; c < 3; ++c) {
      if (distance(turnedBack(place[n]), corner[c]) < 1e-6) processRecord.bcNode[c + 1] = n;
    }
  }
}

/// Runs all stages but the results file; `turnedBack` brings a place to where the other part has it.
DeformedPart deform(const ScratchJob& job, const Motion& turnedBack = unmoved) {
  startRun(job);
  inputStage();
  Column<Vector3> place;
  for (int n = 1; n <= nodeTable.nodeCount; ++n)
    place.push_back({nodeTable.x[n], nodeTable.y[n], nodeTable.z[n]});
  holdCorners(place, turnedBack);
  modelStage();
  analysisDriver();
  sinkMark();

  std::vector<std::pair<std::array<long, 3>, int>> order;
  for (int n = 1; n <= place.rows(); ++n) {
    if (wedgeNumbering.nodeToNewNode[n] < 1) continue;
    const Vector3 p = turnedBack(place[n]);
    order.push_back({{std::lround(p[0] * 1e4), std::lround(p[1] * 1e4), std::lround(p[2] * 1e4)}, n});
  }
  std::sort(order.begin(), order.end());
  DeformedPart part;
  for (const auto& [key, n] : order) {
    const ResultRow total = resultRow(ResultBlock::main, n), inMold = resultRow(ResultBlock::residual, n);
    part.place.push_back(place[n]);
    part.total.push_back({total[0], total[1], total[2]});
    part.inMold.push_back({inMold[0], inMold[1], inMold[2]});
    part.sinkMark.push_back(total[4]);
  }
  return part;
}

/// Growth of the distance of two nodes x the distance, cm2.
double growth(const DeformedPart& part, const std::vector<Vector3>& displacement, std::size_t p,
              std::size_t q) {
  return dot(part.place[p] - part.place[q], displacement[p] - displacement[q]);
}

/// Far enough apart to show every form of the deformation.
std::array<std::size_t, 4> referenceNodes(const DeformedPart& part) {
  const std::size_t n = part.size();
  return {0, n / 3, 2 * n / 3, n - 1};
}

void expectSameShape(const DeformedPart& found, const DeformedPart& expected, double tolerance) {
  ASSERT_EQ(found.size(), expected.size());
  double greatest = 0.0, difference = 0.0;
  for (std::size_t reference : referenceNodes(expected)) {
    for (std::size_t p = 0; p < found.size(); ++p) {
      for (const auto vector : {&DeformedPart::total, &DeformedPart::inMold}) {
        const double right = growth(expected, expected.*vector, p, reference);
        greatest = std::max(greatest, std::abs(right));
        difference = std::max(difference, std::abs(growth(found, found.*vector, p, reference) - right));
      }
    }
  }
  EXPECT_GT(greatest, 0.0);
  EXPECT_LE(difference, tolerance * greatest);
  const double deepest = *std::max_element(expected.sinkMark.begin(), expected.sinkMark.end());
  for (std::size_t p = 0; p < found.size(); ++p) {
    ASSERT_NEAR(found.sinkMark[p], expected.sinkMark[p], 10.0 * tolerance * deepest) << p;
  }
}

ScratchJob jobOf(const part_maker::Mesh& mesh, const part_maker::JobOptions& options) {
  ScratchJob job;
  part_maker::writeJob(job.base(), mesh, options);
  std::filesystem::create_directory_symlink(places::install, job.folder() / "install");
  return job;
}

part_maker::Mesh ribbedPart() {
  return part_maker::makeMesh({.shape = part_maker::Shape::ribbed, .triangles = 1500});
}

part_maker::JobOptions flowJob() {
  return {.fields = part_maker::Fields::flow, .polymer = part_maker::Polymer::pa66_gf30};
}

TEST(Invariance, NumbersOfNodesAndElementsDontMatter) {
  const part_maker::Mesh mesh = ribbedPart();
  part_maker::JobOptions options = flowJob();
  const DeformedPart expected = deform(jobOf(mesh, options));

  options.shuffle = 7;
  const DeformedPart found = deform(jobOf(mesh, options));

  expectSameShape(found, expected, 1e-8);
}

TEST(Invariance, PlaceAndDirectionDontMatter) {
  part_maker::Mesh mesh = ribbedPart();
  const ScratchJob still = jobOf(mesh, flowJob());
  const DeformedPart expected = deform(still);

  for (auto& node : mesh.nodes) node = {node[2] - 300.0, node[0] + 500.0, node[1] + 40.0};  // mm
  const ScratchJob moved = jobOf(mesh, flowJob());
  moved.write(".CT1", still.read(".CT1"));  // the maker finds warm corners by x and y
  DeformedPart found = deform(moved, [](const Vector3& p) {
    return Vector3{p[1] - 50.0, p[2] - 4.0, p[0] + 30.0};
  });

  expectSameShape(found, expected, 1e-7);
}

/// A plate that is warmer outside, and more so on its upper side, about its middle line x = 60 mm.
TEST(Symmetry, ASymmetricPartDistortsSymmetrically) {
  const part_maker::Mesh mesh = part_maker::makeMesh({.shape = part_maker::Shape::plate, .triangles = 768});
  const ScratchJob job = jobOf(mesh, {});
  job.remove(".RS1");
  job.remove(".PT1");
  std::ofstream temperatures(job.path(".CT1"));
  temperatures << "/* symmetric */\n";
  for (std::size_t e = 0; e < mesh.triangles.size(); ++e) {
    double x = 0.0, y = 0.0;
    for (int node : mesh.triangles[e]) {
      x += mesh.node(node)[0] / 3.0;
      y += mesh.node(node)[1] / 3.0;
    }
    const double lower = 60.0 + 0.5 * std::abs(x - 60.0) + 0.1 * y;
    temperatures << e + 1 << " " << lower << " " << lower + 8.0 << "\n";
  }
  temperatures.close();

  const DeformedPart part = deform(job);
  const DeformedPart mirrored = deform(job, [](const Vector3& p) {
    return Vector3{12.0 - p[0], p[1], p[2]};
  });

  expectSameShape(mirrored, part, 1e-6);  // the file gives temperatures and coordinates with six digits
}

struct Formula {
  const char* name;
  part_maker::JobOptions job;
  double strainX, strainY;  // of the whole
  double inMoldX, inMoldY;
};

class FlatPlate : public testing::TestWithParam<Formula> {};

TEST_P(FlatPlate, StrainsByTheFormula) {
  const Formula& formula = GetParam();

  const DeformedPart part = deform(jobOf(part_maker::makeMesh({.triangles = 400}), formula.job));

  for (std::size_t p = 1; p < part.size(); ++p) {
    const Vector3 way = part.place[p] - part.place[0];
    const double scale = 1e-9 * dot(way, way) * 6.5e-3;
    ASSERT_NEAR(growth(part, part.total, p, 0),
                formula.strainX * way[0] * way[0] + formula.strainY * way[1] * way[1], scale);
    ASSERT_NEAR(growth(part, part.inMold, p, 0),
                formula.inMoldX * way[0] * way[0] + formula.inMoldY * way[1] * way[1], scale);
    ASSERT_NEAR(part.total[p][2], part.total[0][2], 1e-9);
  }
}

/// The maker's PP: E 1.4e10 dyn/cm2, Poisson's ratio 0.4, expansion 1e-4 1/K. Strain of a frozen-in stress:
/// -(s1 - nu s2) / E; of cooling from 90 to 25 C: -1e-4 x 65.
INSTANTIATE_TEST_SUITE_P(
    Formulas, FlatPlate,
    testing::Values(
        Formula{"Cooling", {.stress1 = 0.0, .stress2 = 0.0}, -6.5e-3, -6.5e-3, 0.0, 0.0},
        Formula{
            "Stress", {.stress1 = 3.5e7, .stress2 = 1.4e7, .temperature = 20.0}, -2.1e-3, 0.0, -2.1e-3, 0.0},
        Formula{"Both", {.stress1 = 0.0, .stress2 = 2.8e7}, -5.7e-3, -8.5e-3, 0.8e-3, -2.0e-3}),
    [](const auto& formula) { return std::string(formula.param.name); });

}  // namespace
}  // namespace keld::testing_support
