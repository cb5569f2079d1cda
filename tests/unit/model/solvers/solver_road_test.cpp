// The road by aggregation: rigid motions, the choice of a solver, and the answer of the direct one.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/rigid_modes.h"
#include "model/solvers/solver_road.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "support/model_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using namespace testing_support;

class WallKinds : public ModelTest, public testing::WithParamInterface<int> {
 protected:
  /// A part askew, whose nodes stand in no plane of the axes.
  void loadPart(const TestMesh& mesh) {
    loadModel(moved(mesh, skewRotation(), {3.0, -1.0, 2.0}));
    processRecord.wallModel = GetParam();
    setStress(2e7, -1e7);
    runModelStages();
  }
};
INSTANTIATE_TEST_SUITE_P(Walls, WallKinds, testing::Values(wedge_walls, facet_walls), [](const auto& test) {
  return std::string(test.param == wedge_walls ? "Wedge" : "Facet");
});

// Rows that translations leave without force are not next to a held node: rotations must do so too, on a flat
// part, where the mean offset at a node is that of each of its triangles.
TEST_P(WallKinds, RigidMotionsTakeNoForce) {
  loadPart(plateMesh(24, 16, 6.0, 4.0, 0.2));
  patternSearch();
  assemblePass(1, 1);
  const std::vector<double> modes = rigidModes(wallModel());
  const int rows = freedoms.freeDofCount;
  ASSERT_EQ(static_cast<int>(modes.size()), 6 * rows);
  double stiffness = 0.0;
  for (int row = 1; row <= rows; ++row)
    stiffness = std::max(stiffness, systemOfPass.matrixValue[systemOfPass.rowStart[row]]);

  std::vector<Column<double>> force;
  for (int mode = 0; mode < 6; ++mode) {
    Column<double> motion(rows);
    std::copy_n(modes.data() + mode * rows, rows, motion.begin());
    force.push_back(product(motion));
  }
  int away = 0;
  for (int row = 1; row <= rows; ++row) {
    const auto magnitude = [&](std::size_t mode) { return std::abs(force[mode][row]); };
    if (std::max({magnitude(0), magnitude(1), magnitude(2)}) > 1e-10 * stiffness) continue;
    ++away;
    EXPECT_LT(std::max({magnitude(3), magnitude(4), magnitude(5)}), 1e-9 * stiffness) << row;
  }
  EXPECT_GT(away, rows * 3 / 4);
}

TEST_P(WallKinds, AggregationGivesTheDirectAnswerOfBothPasses) {
  const auto displacements = [this](int road) {
    loadPart(ribbedMesh(24, 16, 6));
    processRecord.solverChoice = 2;
    processRecord.solverRoad = road;
    testing::internal::CaptureStdout();
    analysisDriver();
    return std::tuple(testing::internal::GetCapturedStdout(), solution.displacementInMold,
                      solution.displacementTotal);
  };
  const auto [said, inMold, total] = displacements(aggregation_road);
  const auto [saidDirect, inMoldDirect, totalDirect] = displacements(road_as_chosen);

  EXPECT_EQ(occurrences(said, "Solver= TIER by aggregation"), 2) << said;
  EXPECT_THAT(said, testing::Not(HasSubstr("not converged")));
  EXPECT_EQ(occurrences(saidDirect, "Solver= MUMPS"), 2);
  const auto compare = [](const Column<double>& found, const Column<double>& expected) {
    double size = 0.0, apart = 0.0;
    for (int i = 1; i <= expected.rows(); ++i) {
      size = std::max(size, std::abs(expected[i]));
      apart = std::max(apart, std::abs(found[i] - expected[i]));
    }
    EXPECT_GT(size, 0.0);
    EXPECT_LT(apart, 1e-7 * size);
  };
  compare(inMold, inMoldDirect);
  compare(total, totalDirect);
}

struct Choice {
  const char* name;
  int solverChoice, solverRoad, unknowns;
  double gigabytes;
  Road road;
};
void PrintTo(const Choice& c, std::ostream* out) { *out << c.name; }

class RoadOf : public testing::TestWithParam<Choice> {};

TEST_P(RoadOf, FollowsTheSettingsOrTheSize) {
  const Choice& c = GetParam();
  ProcessRecord record;
  record.solverChoice = c.solverChoice;
  record.solverRoad = c.solverRoad;
  EXPECT_EQ(roadOf(record, c.unknowns, static_cast<std::uint64_t>(c.gigabytes * 1e9)), c.road);
}
INSTANTIATE_TEST_SUITE_P(
    Choices, RoadOf,
    testing::Values(Choice{"Value2Direct", 2, 1, 1000000, 1.0, Road::direct},
                    Choice{"Value2Other", 1, 1, 100, 1.0, Road::classical},
                    Choice{"Aggregation", 2, 2, 100, 1.0, Road::aggregation},
                    Choice{"AutomaticSmall", 1, 3, automatic_limit - 1, 8.0, Road::direct},
                    Choice{"AutomaticLarge", 2, 3, automatic_limit, 8.0, Road::aggregation},
                    Choice{"AutomaticShortOfMemory", 2, 3, automatic_limit - 1, 0.05, Road::aggregation}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace keld
