// Settings of aggregation by the shape of a part's triangles.
#include <gtest/gtest.h>

#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/solvers/aggregation_tuning.h"
#include "support/model_test.h"

namespace keld {
namespace {

using namespace testing_support;

struct Part {
  const char* name;
  int cellsX, cellsY;  // of 6 x 4 cm
  double thickness;    // cm
  double shortEdgeOverWall, needleShare;
  bool facets;
  AggregationTuning tuning;
};
void PrintTo(const Part& p, std::ostream* out) { *out << p.name; }

class Tuning : public ModelTest, public testing::WithParamInterface<Part> {};

TEST_P(Tuning, FollowsWallsAndTriangles) {
  const Part& p = GetParam();
  TestMesh mesh = moved(plateMesh(p.cellsX, p.cellsY, 6.0, 4.0), skewRotation(), {3.0, -1.0, 2.0});
  mesh.thickness = p.thickness;
  loadModel(mesh);
  runModelStages();

  const TriangleShapes shapes = triangleShapes();
  EXPECT_NEAR(shapes.shortEdgeOverWall, p.shortEdgeOverWall, 1e-6);
  EXPECT_NEAR(shapes.needleShare, p.needleShare, 1e-9);
  const AggregationTuning found = aggregationTuning(p.facets, shapes);
  EXPECT_EQ(found.strength, p.tuning.strength);
  EXPECT_EQ(found.limit, p.tuning.limit);
  EXPECT_EQ(found.smoothingDegree, p.tuning.smoothingDegree);
}
INSTANTIATE_TEST_SUITE_P(
    Parts, Tuning,
    testing::Values(Part{"Squares", 24, 16, 0.2, 1.25, 0.0, false, {1, 0.08, 2}},
                    Part{"ShortEdges", 24, 16, 1.3, 0.25 / 1.3, 0.0, false, {1, 0.08, 3}},
                    Part{"Needles", 6, 40, 0.2, 0.5, 1.0, false, {1, 0.08, 5}},
                    Part{"SquareFacets", 24, 16, 0.2, 1.25, 0.0, true, {2, 0.16, 2}},
                    Part{"ShortFacets", 24, 16, 1.3, 0.25 / 1.3, 0.0, true, {2, 0.16, 2}},
                    Part{"NeedleFacets", 6, 40, 0.2, 0.5, 1.0, true, {2, 0.16, 5}}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace keld
