// Steps of the thickness repair, each on a skin of a plate.
#include "model/skin/shell_thickness.h"

#include <gtest/gtest.h>

#include <cmath>

#include "input/mesh_tables.h"
#include "model/skin/shell_neighbours.h"
#include "model/skin/shell_tables.h"
#include "support/skin_scenes.h"

namespace keld {
namespace {

TEST(ShellThickness, FillsGapsFromNeighboursAndIslandsFromTheMean) {
  plateSkin(2);
  const IncidenceLists neighbours = edgeNeighbours(elementsAtNodes(false));
  elementTable.thickness[1] = 0.0;
  const int* k = neighbours.begin(1);
  elementTable.thickness[k[0]] = 0.1;
  elementTable.thickness[k[1]] = 0.3;
  elementTable.thickness[k[2]] = 0.0;

  fillThicknessGaps(neighbours);

  EXPECT_DOUBLE_EQ(elementTable.thickness[1], 0.2);
  EXPECT_GT(elementTable.thickness[k[2]], 0.1);
}

TEST(ShellThickness, CharacteristicThicknessWeighsTheCommonWallMost) {
  plateSkin();
  EXPECT_NEAR(characteristicThicknessOf(0.2), 2.0 * 0.2, 1e-12);  // one value: every bin edge is that value

  // Three quarters at 0.1, a quarter at 0.2: bins 1 and 999 hold 3m and m triangles.
  for (int e = 1; e <= elementTable.elementCount; ++e) elementTable.thickness[e] = e % 4 ? 0.1 : 0.2;
  const double w1 = std::pow(0.75 * elementTable.elementCount, 1.5),
               w2 = std::pow(0.25 * elementTable.elementCount, 1.5);
  const double edge999 = 0.1 + 998 * 0.1 / 999;
  EXPECT_NEAR(characteristicThicknessOf(1.0), 2.0 * (w1 * 0.1 + w2 * edge999) / (w1 + w2), 1e-12);
}

TEST(ShellThickness, ThickElementsTakeTheNearestThinOneAndClassTheirNodes) {
  plateSkin();
  shell.characteristicThickness = 0.4;
  elementTable.thickness[5] = 0.45;
  elementTable.thickness[40] = 0.5;  // at 1.25 times the characteristic thickness

  repairThickElements();

  EXPECT_EQ(shell.elementSplitFlag[5], 1);
  EXPECT_EQ(shell.thicknessClass[elementTable.node2[5]], 1);
  EXPECT_EQ(shell.thicknessClass[elementTable.node2[40]], 2);
  EXPECT_DOUBLE_EQ(elementTable.thickness[5], 0.2);
  for (int e = 1; e <= elementTable.elementCount; ++e) elementTable.thickness[e] = 0.5 + e * 1e-3;
  const Column<double> before = elementTable.thickness;
  repairThickElements();  // all thick: nothing to take from
  EXPECT_EQ(elementTable.thickness, before);
}

TEST(ShellThickness, LevelsDentsAndSpikesAndLimitsTheRest) {
  plateSkin();
  const IncidenceLists neighbours = edgeNeighbours(elementsAtNodes(false));
  shell.characteristicThickness = 0.4;
  elementTable.thickness[3] = 0.05;
  elementTable.thickness[60] = 0.9;
  elementTable.thickness[90] = 0.10001;  // not below half of its neighbours
  const int last = elementTable.elementCount;
  elementTable.thickness[last] = 0.05;

  removeThicknessSpikes(neighbours);

  EXPECT_DOUBLE_EQ(elementTable.thickness[last], 0.2);

  EXPECT_DOUBLE_EQ(elementTable.thickness[3], 0.2);
  EXPECT_DOUBLE_EQ(elementTable.thickness[60], 0.2);
  EXPECT_DOUBLE_EQ(elementTable.thickness[90], 0.10001);

  elementTable.thickness[3] = 0.0019;  // below a hundredth of a neighbour
  elementTable.thickness[60] = 1.3;    // above three characteristic thicknesses
  limitThickness(neighbours);
  EXPECT_DOUBLE_EQ(elementTable.thickness[3], 0.2);
  EXPECT_LT(elementTable.thickness[60], 0.21);
}

}  // namespace
}  // namespace keld
