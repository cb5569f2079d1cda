// Choice of the boundary nodes, renumbering, restraint and volume pass on small meshes.
#include "model/restraint/restraint.h"

#include <gmock/gmock.h>

#include "input/mesh_tables.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/system/loads.h"
#include "model/walls/wedge/wedge_numbering.h"
#include "model/walls/wedge/wedge_shape.h"
#include "support/model_test.h"

namespace keld {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing_support::loadModel;
using testing_support::occurrences;
using testing_support::plateMesh;
using testing_support::runModelStages;
using testing_support::TestMesh;

using Restraint = testing_support::ModelTest;

// A square cut by both diagonals, centre first in no element:   4---3
//                                                               | 5 |
//                                                               1---2
const TestMesh square{{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {1, 1, 0}},
                      {{1, 2, 5}, {2, 3, 5}, {3, 4, 5}, {4, 1, 5}},
                      0.2};

TEST_F(Restraint, TiesGoToTheEarliestFarthestAndTheLatestWidestNode) {
  loadModel(square);
  selectBoundaryNodes(Joining::byTwoNodes);
  // Nodes in order of discovery: 1, 2, 5, 3, 4. All corners are equally far from 5;
  // 2 and 4 span equal triangles.
  EXPECT_EQ(boundaryNodes[1].boundaryNode1, 5);
  EXPECT_EQ(boundaryNodes[1].boundaryNode2, 1);
  EXPECT_EQ(boundaryNodes[1].boundaryNode3, 4);

  loadModel(plateMesh(29, 9, 29.0, 9.0));  // 1 / 300 isn't exact, the mean of 300 such nodes is
  selectBoundaryNodes(Joining::byTwoNodes);
  EXPECT_EQ(boundaryNodes[1].boundaryNode1, 14 * 10 + 4 + 1);  // the earliest of four around the centre
}

TEST_F(Restraint, ThreeGivenNodesAreTakenAndOneZeroChoosesAllAnew) {
  loadModel(square);
  processRecord.bcNode = {0, 2, 3, 5};
  selectBoundaryNodes(Joining::byTwoNodes);
  EXPECT_EQ(boundaryNodes[1].boundaryNode1, 2);
  EXPECT_EQ(boundaryNodes[1].boundaryNode3, 5);
  processRecord.bcNode = {0, 2, 0, 5};
  selectBoundaryNodes(Joining::byTwoNodes);
  EXPECT_EQ(boundaryNodes[1].boundaryNode1, 5);
}

TEST_F(Restraint, ImpossibleBoundaryNodesEndTheRun) {
  TestMesh mesh = square;
  mesh.node.push_back({9, 9, 9});  // node 6 in no triangle
  loadModel(mesh);
  processRecord.bcNode = {0, 2, 6, 5};
  EXPECT_THAT(failureOf([] { selectBoundaryNodes(Joining::byTwoNodes); }), HasSubstr("no triangle"));
  processRecord.bcNode = {0, 1, 3, 5};  // on one diagonal
  EXPECT_THAT(failureOf(runModelStages),
              HasSubstr("Error D5014 !!  The triangular area of three boundary nodes= 0.0"));

  // A chosen triple that is a line or a point ends the same way.
  loadModel({{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{1, 2, 3}}, 0.2});
  EXPECT_THAT(failureOf(runModelStages), HasSubstr("D5014"));
  loadModel({{{1, 1, 1}}, {{1, 1, 1}}, 0.2});
  EXPECT_THAT(failureOf(runModelStages), HasSubstr("D5014"));
}

TEST_F(Restraint, NodesAreNumberedInOrderOfUseWithRunnersBehindTheLayers) {
  TestMesh mesh = square;
  mesh.node.insert(mesh.node.end(), {{7, 7, 7}, {8, 8, 8}, {9, 9, 9}});  // 6 unused, 7 and 8 runner nodes
  loadModel(mesh);
  elementTable.elementCount += 2;  // runners 8-7 and 7-3
  for (const auto& [from, to] : {std::pair{8, 7}, std::pair{7, 3}}) {
    elementTable.node1.push_back(from);
    elementTable.node2.push_back(to);
    elementTable.node3.push_back(0);
    elementTable.thickness.push_back(0.4);
  }
  testing::internal::CaptureStdout();
  runModelStages();
  const std::string report = testing::internal::GetCapturedStdout();

  EXPECT_THAT(wedgeNumbering.nodeToNewNode, ElementsAre(1, 2, 4, 5, 3, 0, -12, -11));
  EXPECT_EQ(wedgeNumbering.wedgeNodeCount, 10);
  EXPECT_EQ(nodeTable.nodeCount, 13);
  EXPECT_THAT(report, HasSubstr("   Degree of freedom = 39\n"));
  EXPECT_EQ(elementTable.node1[5], 11);
  EXPECT_EQ(nodeTable.x[11], 9.0);  // geometry node 8
  EXPECT_EQ(elementTable.node6[3], 8);
  EXPECT_EQ(nodeTable.x[8], nodeTable.x[3]);
  EXPECT_THAT(wedgeNumbering.nodeMate, ElementsAre(6, 7, 8, 9, 10, 1, 2, 3, 4, 5));
  EXPECT_THAT(freedoms.nodeRestraint, ElementsAre(-2, 1, -1, 1, -3, 1, 1, 1, 1, 1));
  EXPECT_EQ(freedoms.freeDofCount, 24);
}

TEST_F(Restraint, VolumePassSharesVolumeAndTemperatureBySide) {
  loadModel(square);
  elementTemperatureField.sideTemperature1 = {300, 320, 340, 360};
  elementTemperatureField.sideTemperature2 = {400, 400, 400, 500};
  runModelStages();
  EXPECT_NEAR(volumes.elementVolumeTotal, 0.8, 1e-15);
  EXPECT_NEAR(volumes.meanJacobian, 0.2, 1e-15);
  // Wedge node 1 is corner 1, at elements 1 and 4; node 3 is the centre; 6 and 8 are their mates.
  EXPECT_NEAR(volumes.nodalVolume[1], 0.4 / 6.0, 1e-15);
  EXPECT_NEAR(volumes.nodalTemperature[1], 330.0, 1e-12);
  EXPECT_NEAR(volumes.nodalTemperature[3], 330.0, 1e-12);
  EXPECT_NEAR(volumes.nodalTemperature[6], 450.0, 1e-12);
  EXPECT_NEAR(volumes.nodalTemperature[8], 425.0, 1e-12);
}

TEST_F(Restraint, BadElementsReportEveryPointInElementOrder) {
  TestMesh mesh = square;
  mesh.triangle.push_back({1, 2, 2});  // element 5: no area
  loadModel(mesh);
  elementTable.thickness[2] = 0.0;
  elementTable.thickness[3] = -0.2;
  testing::internal::CaptureStdout();
  runModelStages();
  const std::string report = testing::internal::GetCapturedStdout();

  EXPECT_EQ(
      occurrences(report, "\n !! Error D5016 !!  Element 2 Determinant value is Negative 0.000000e+00\n"),
      21);
  EXPECT_EQ(
      occurrences(report, "\n !! Error D5016 !!  Element 3 Determinant value is Negative -2.000000e-01\n"),
      21);
  EXPECT_EQ(occurrences(report,
                        "\n !! Error D5015 !!  The # 5 element data error.\n"
                        "\n !! Error D5016 !!  Element 5 Determinant value is Negative 0.000000e+00\n"),
            21);
  EXPECT_LT(report.rfind("Element 2"), report.find("Element 3"));
  EXPECT_LT(report.rfind("Element 5"), report.find("Degree of freedom"));
  EXPECT_NEAR(volumes.meanJacobian, 0.2, 1e-15);
  EXPECT_NEAR(volumes.elementVolumeTotal, 0.2, 1e-15);  // two good elements, less the inverted one
}

TEST_F(Restraint, MeshesWithoutAUsableVolumeEndTheRun) {
  loadModel(square);
  for (double& h : elementTable.thickness) h = 0.0;
  EXPECT_THAT(failureOf(runModelStages), HasSubstr("positive volume"));

  loadModel(square);
  nodeTable.x[2] = 1e3;
  elementTable.thickness[1] = 1e308;
  EXPECT_THAT(failureOf(runModelStages), HasSubstr("part element 1 isn't a finite number"));

  loadModel({square.node, {}, 0.2});
  EXPECT_THAT(failureOf(runModelStages), HasSubstr("at least one triangle"));
}

}  // namespace
}  // namespace keld
