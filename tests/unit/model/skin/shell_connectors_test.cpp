// Rules of the connector bars on a pair of triangles.
#include "model/skin/shell_connectors.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "input/mesh_tables.h"
#include "model/skin/shell_neighbours.h"
#include "model/skin/shell_tables.h"
#include "support/skin_scenes.h"

namespace keld {
namespace {

struct Scene {
  const char* name;
  std::function<void()> change;
  std::vector<int> kinds;  // of the rows that are made
};

class Connectors : public testing::TestWithParam<Scene> {};

TEST_P(Connectors, MakesTheRowsOfThePasses) {
  makePair();
  GetParam().change();

  makeConnectors(elementsAtNodes(false));

  ASSERT_EQ(shell.runningCount - elementTable.elementCount, static_cast<int>(GetParam().kinds.size()));
  for (std::size_t r = 0; r < GetParam().kinds.size(); ++r) {
    const int row = elementTable.elementCount + 1 + static_cast<int>(r);
    EXPECT_EQ(shell.elementKind[row], GetParam().kinds[r]);
    EXPECT_EQ(elementTable.node3[row], 0);
    EXPECT_EQ(elementTable.thickness[row], 0.0);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rules, Connectors,
    testing::Values(Scene{"PlainEndsInTheThirdPass", [] {}, {-2, -2, -2}},
                    Scene{"FeatureEndsInTheFirst",
                          [] {
                            setFeature({1, 2, 3, 4, 5, 6});
                          },
                          {-1, -1, -1}},
                    Scene{"MixedEndsInTheSecond",
                          [] {
                            setFeature({1, 5});
                          },
                          {-1, -1, -2}},
                    Scene{"NoPartner", [] { shell.elementPartner[1] = 0; }, {}},
                    Scene{"ThickElement", [] { shell.elementSplitFlag[1] = 1; }, {}},
                    Scene{"ThickPartner", [] { shell.elementSplitFlag[2] = 1; }, {}},
                    Scene{"EndInUse", [] { shell.connectorUse[4] = 1; }, {-2, -2}},
                    Scene{"FeatureOfClassTwo",
                          [] {
                            setFeature({1, 2, 3, 4, 5, 6});
                            shell.thicknessClass[1] = 2;
                          },
                          {-1, -1}},
                    Scene{"FeatureEndOfClassTwoWithPlainEndOfNone",
                          [] {
                            setFeature({1, 2, 3});
                            shell.thicknessClass[1] = 2;
                            shell.thicknessClass[2] = 2;
                            shell.thicknessClass[5] = 1;
                          },
                          {-1, -1}},
                    Scene{"NormalsApart",
                          [] {
                            elementTable.nx[1] = 0.6;
                            elementTable.nz[1] = 0.79;
                          },
                          {}},
                    Scene{"NormalsEnoughForPassTwoAlone",
                          [] {
                            setFeature({1, 2});
                            elementTable.nx[1] = 0.71;
                            elementTable.nz[1] = 0.7;
                          },
                          {-1, -1}},
                    Scene{"TooLongForTheWall", [] { elementTable.thickness[1] = 0.09; }, {}},
                    Scene{"LongerWallInTheFirstPass",
                          [] {
                            setFeature({1, 2, 3, 4, 5, 6});
                            elementTable.thickness[1] = 0.09;
                          },
                          {-1, -1, -1}},
                    Scene{"TooLongForThePart", [] { geometry.largestExtent = 1.0; }, {}},
                    Scene{"OutOfReach", [] { shell.characteristicThickness = 0.06; }, {}},
                    Scene{"OnOneTriangle", [] { addElement(1, 4, 2); }, {-2, -2}},
                    Scene{"MidpointInTriangle",
                          [] {
                            for (const double x : {-0.1, 0.3, -0.1}) nodeTable.x.push_back(x);
                            for (const double y : {-0.1, -0.1, 0.2}) nodeTable.y.push_back(y);
                            nodeTable.z.resize(9, 0.1);
                            nodeTable.nodeCount = 9;
                            shell.featureNode.resize(9, 0);
                            addElement(7, 8, 9);
                          },
                          {-2, -2}}),
    [](const auto& scene) { return scene.param.name; });

TEST(Connectors, TheSameBarIsMadeOnceAndTheFeatureEndComesFirst) {
  makePair();
  shell.elementPartner[2] = 1;
  setFeature({5});

  makeConnectors(elementsAtNodes(false));

  ASSERT_EQ(shell.runningCount, 5);
  EXPECT_EQ(elementTable.node1[3], 5);  // pass 2, from element 1's corner 2
  EXPECT_EQ(elementTable.node2[3], 2);
}

TEST(Connectors, TheFilterMovesNodesAndKeepsTheKindOfTheSlot) {
  makePair();
  setFeature({1, 4});
  makeConnectors(elementsAtNodes(false));
  ASSERT_EQ(shell.runningCount, 5);
  ASSERT_EQ(shell.elementKind[3], -1);
  const int second = elementTable.node1[4];
  nodeTable.z[4] = 3.0;  // the first row is now longer than half of the part

  filterConnectors();

  ASSERT_EQ(shell.runningCount, 4);
  EXPECT_EQ(elementTable.node1[3], second);
  EXPECT_EQ(shell.elementKind[3], -1);
  EXPECT_DOUBLE_EQ(elementTable.area[3], 0.2);
}

TEST(Connectors, AClaimantReplacesAPartnerThatFacesAnotherWay) {
  makePair();
  addElement(1, 4, 2);  // stands across: its normal is at right angles to the other two
  shell.elementPartner = {2, 3, 0};

  cleanUpPartners();

  EXPECT_EQ(shell.elementPartner[1], 2);
  EXPECT_EQ(shell.elementPartner[2], 1);  // from 3, at |cos| 0, to its only claimant
}

}  // namespace
}  // namespace keld
