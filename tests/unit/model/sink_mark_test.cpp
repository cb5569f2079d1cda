// The sink mark of one hand-sized wedge.
#include "model/sink_mark.h"

#include <gtest/gtest.h>

#include "input/mesh_tables.h"
#include "model/model_tables.h"

namespace keld {
namespace {

/// Right triangle with legs of 1 cm, wall 0.2 cm; the upper layer moves by `rise` along the normal. Half of
/// the movement stands in each displacement vector.
void loadWedge(double rise) {
  nodeTable.x = {0, 1, 0, 0, 1, 0};
  nodeTable.y = {0, 0, 1, 0, 0, 1};
  nodeTable.z.assign(6, 0.0);
  elementTable.partElementCount = 1;
  elementTable.node1 = {1};
  elementTable.node2 = {2};
  elementTable.node3 = {3};
  elementTable.node4 = {4};
  elementTable.node5 = {5};
  elementTable.node6 = {6};
  elementTable.thickness = {0.2};
  wedgeNumbering.wedgeNodeCount = 6;
  freedoms.nodeFirstDof = {1, 4, 7, 10, 13, 16};
  volumes.nodalVolume = {0.01, 0.02, 0.0, 0.01, 0.01, 0.01};
  solution.displacementTotal.assign(18, 0.0);
  for (int dof : {12, 15, 18}) solution.displacementTotal[dof] = 0.5 * rise;
  solution.displacementInMold = solution.displacementTotal;
}

TEST(SinkMark, IsWhatAThinnedWallLosesAtItsLowerNodes) {
  loadWedge(-0.02);  // A h (L - h) / 3 = 0.5 x 0.2 x (-0.02) / 3

  sinkMark();

  const double lost = 0.5 * 0.2 * 0.02 / 3.0;
  EXPECT_NEAR(solution.rowSolution[1], lost / 0.01, 1e-15);
  EXPECT_NEAR(solution.rowSolution[2], lost / 0.02, 1e-15);
  EXPECT_EQ(solution.rowSolution[3], 0.0);  // a node without volume
  EXPECT_EQ(solution.rowSolution[4], 0.0);
}

TEST(SinkMark, IsNothingWhereTheWallThickens) {
  loadWedge(0.02);

  sinkMark();

  EXPECT_EQ(solution.rowSolution, Column<double>(6, 0.0));
}

}  // namespace
}  // namespace keld
