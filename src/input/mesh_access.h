// Rows of NodeTable and ElementTable as small values. Used throughout src/model
// and by the statistics of the mesh.
#pragma once

#include <array>

#include "input/mesh_tables.h"
#include "run/base/vector3.h"

namespace keld {

/// Coordinates of a node in cm.
inline Vector3 positionOf(int node) { return {nodeTable.x[node], nodeTable.y[node], nodeTable.z[node]}; }

/// Nodes 1 to 6 of a part element, after the wedge renumbering.
inline std::array<int, 6> wedgeNodesOf(int element) {
  const ElementTable& t = elementTable;
  return {t.node1[element], t.node2[element], t.node3[element],
          t.node4[element], t.node5[element], t.node6[element]};
}

/// Whether an element is a triangle, not a runner element or a connector.
inline bool isTriangle(int element) { return elementTable.node3[element] != 0; }

/// Nodes 1 to 3 of an element; the third is 0 where it is no triangle.
inline std::array<int, 3> cornerNodesOf(int element) {
  return {elementTable.node1[element], elementTable.node2[element], elementTable.node3[element]};
}

/// Coordinates of nodes 1 to 3 of a triangle.
inline std::array<Vector3, 3> cornersOf(int element) {
  const auto node = cornerNodesOf(element);
  return {positionOf(node[0]), positionOf(node[1]), positionOf(node[2])};
}

}  // namespace keld
