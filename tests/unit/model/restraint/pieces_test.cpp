// Pieces of small meshes drawn by hand, and where each is held.
#include "model/restraint/pieces.h"

#include <gmock/gmock.h>

#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/restraint/restraint.h"
#include "support/model_test.h"

namespace keld {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing_support::loadModel;
using testing_support::plateMesh;
using testing_support::runModelStages;
using testing_support::TestMesh;

struct PieceCase {
  const char* name;
  std::vector<std::array<int, 3>> triangle;
  Column<int> byTwoNodes, byOneNode;  // piece of each triangle
};

class PiecesOf : public testing::TestWithParam<PieceCase> {};

TEST_P(PiecesOf, FollowTheCommonNodes) {
  const PieceCase& given = GetParam();
  loadModel({std::vector<Vector3>(12), given.triangle, 0.2});
  const auto found = [](Joining rule) { return findPieces(rule).ofElement; };
  EXPECT_EQ(found(Joining::byTwoNodes), given.byTwoNodes);
  EXPECT_EQ(found(Joining::byOneNode), given.byOneNode);
}

INSTANTIATE_TEST_SUITE_P(
    Meshes, PiecesOf,
    testing::Values(
        PieceCase{"CommonEdge", {{1, 2, 3}, {3, 2, 4}}, {1, 1}, {1, 1}},
        PieceCase{"Apart", {{1, 2, 3}, {4, 5, 6}, {7, 2, 1}}, {1, 2, 1}, {1, 2, 1}},
        PieceCase{"Hinge", {{1, 2, 3}, {3, 4, 5}}, {1, 2}, {1, 1}},
        // Two strips 1-2-3-4 and 1-5-6-4 that touch at both ends.
        PieceCase{"BothEnds", {{1, 2, 3}, {2, 3, 4}, {1, 5, 6}, {5, 6, 4}}, {1, 1, 1, 1}, {1, 1, 1, 1}},
        // 123 touches the patches 2 and 3 at one node each; these two touch at 7 and 8, so that the grown
        // patch has two nodes in common with 123.
        PieceCase{"GrownTogether",
                  {{1, 2, 3}, {2, 4, 7}, {4, 7, 8}, {3, 7, 5}, {3, 5, 8}},
                  {1, 1, 1, 1, 1},
                  {1, 1, 1, 1, 1}},
        PieceCase{"RingOfHinges", {{1, 2, 3}, {3, 4, 5}, {5, 6, 1}}, {1, 2, 3}, {1, 1, 1}},
        PieceCase{"Fan", {{1, 2, 3}, {1, 4, 5}, {1, 6, 7}, {1, 8, 9}}, {1, 2, 3, 4}, {1, 1, 1, 1}},
        PieceCase{"ANodeTwice", {{1, 2, 2}, {1, 2, 3}, {4, 4, 3}}, {1, 1, 2}, {1, 1, 1}}),
    [](const auto& mesh) { return std::string(mesh.param.name); });

/// Two plates of 4 x 2 cells, the second 9 cm away; nodes 1 to 15 and 16 to 30.
TestMesh twoPlates() {
  TestMesh mesh = plateMesh(4, 2, 4.0, 2.0);
  const TestMesh other = mesh;
  for (Vector3 p : other.node) mesh.node.push_back({p[0] + 9.0, p[1], p[2]});
  for (const auto& t : other.triangle) mesh.triangle.push_back({t[0] + 15, t[1] + 15, t[2] + 15});
  return mesh;
}

using Held = testing_support::ModelTest;

TEST_F(Held, EachPieceByTheSameRuleAtNodesOfItsOwn) {
  loadModel(plateMesh(4, 2, 4.0, 2.0));
  selectBoundaryNodes(Joining::byTwoNodes);
  const BoundaryNodes alone = boundaryNodes[1];
  loadModel(twoPlates());
  testing::internal::CaptureStdout();
  selectBoundaryNodes(Joining::byTwoNodes);
  const std::string report = testing::internal::GetCapturedStdout();

  ASSERT_EQ(boundaryNodes.rows(), 2);
  for (int piece : {1, 2}) {
    const int before = 15 * (piece - 1);
    EXPECT_EQ(boundaryNodes[piece].boundaryNode1, alone.boundaryNode1 + before);
    EXPECT_EQ(boundaryNodes[piece].boundaryNode2, alone.boundaryNode2 + before);
    EXPECT_EQ(boundaryNodes[piece].boundaryNode3, alone.boundaryNode3 + before);
  }
  EXPECT_THAT(report, HasSubstr("!! Warning !!  The part is in 2 pieces"));
  EXPECT_THAT(report, HasSubstr("Piece 2: triangles= 16, held at nodes"));
  runModelStages();
  EXPECT_EQ(freedoms.freeDofCount, 3 * 60 - 12);
}

TEST_F(Held, GivenNodesCountForThePieceThatHasAllOfThem) {
  loadModel(twoPlates());
  processRecord.bcNode = {0, 16, 18, 30};
  selectBoundaryNodes(Joining::byTwoNodes);
  EXPECT_EQ(boundaryNodes[2].boundaryNode3, 30);
  EXPECT_LE(boundaryNodes[1].boundaryNode3, 15);

  processRecord.bcNode = {0, 1, 18, 30};
  testing::internal::CaptureStdout();
  selectBoundaryNodes(Joining::byTwoNodes);
  EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("lie in different pieces"));
  EXPECT_NE(boundaryNodes[2].boundaryNode1, 18);
}

TEST_F(Held, APieceThatCannotBeHeldEndsTheRun) {
  TestMesh line = twoPlates();
  for (std::size_t n = 15; n < 30; ++n) line.node[n][1] = 0.0;
  loadModel(line);
  EXPECT_THAT(failureOf(runModelStages), testing::AllOf(HasSubstr("D5014"), HasSubstr("2 pieces")));

  loadModel({{{0, 0, 0}, {2, 0, 0}, {1, 1, 0}, {0, 2, 0}, {2, 2, 0}}, {{1, 2, 3}, {3, 4, 5}}, 0.2});
  EXPECT_THAT(failureOf(runModelStages), HasSubstr("the triangle of nodes 1, 2 and 3 can't be held"));
}

}  // namespace
}  // namespace keld
