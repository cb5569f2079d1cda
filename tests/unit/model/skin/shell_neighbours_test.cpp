// Neighbours of the triangles of a closed skin.
#include "model/skin/shell_neighbours.h"

#include <gtest/gtest.h>

#include <array>

#include "input/mesh_tables.h"
#include "support/skin_scenes.h"

namespace keld {
namespace {

TEST(ShellNeighbours, AClosedSkinHasThreeAndATJunctionMore) {
  plateSkin();
  const IncidenceLists atNode = elementsAtNodes(false);
  const IncidenceLists neighbours = edgeNeighbours(atNode);
  for (int e = 1; e <= elementTable.elementCount; ++e) ASSERT_EQ(neighbours.count(e), 3) << e;

  // Element 1 once more over its own edge 12, with a runner at the same nodes that does not count.
  const int a = elementTable.node1[1], b = elementTable.node2[1];
  for (const auto& [n1, n2, n3] : {std::array{b, a, nodeTable.nodeCount}, std::array{a, b, 0}}) {
    elementTable.node1.push_back(n1);
    elementTable.node2.push_back(n2);
    elementTable.node3.push_back(n3);
  }
  elementTable.elementCount += 2;
  EXPECT_EQ(edgeNeighbours(elementsAtNodes(false)).count(1), 4);
  EXPECT_EQ(elementsAtNodes(true).count(a), elementsAtNodes(false).count(a) + 1);
}

// ---- thickness steps

}  // namespace
}  // namespace keld
