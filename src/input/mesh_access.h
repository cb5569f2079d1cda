// Rows of NodeTable and ElementTable as small values. Used throughout src/model
// and by the statistics of the mesh.
#pragma once

#include <array>

#include "input/mesh_tables.h"
#include "run/base/vector3.h"

namespace keld {

/// Coordinates of a node in cm.
inline Vector3 positionOf(int node) {
  const auto n = static_cast<std::size_t>(node);
  return {nodeTable.x[n], nodeTable.y[n], nodeTable.z[n]};
}

/// Nodes 1 to 6 of a part element, after the wedge renumbering.
inline std::array<int, 6> wedgeNodesOf(int element) {
  const ElementTable& t = elementTable;
  const auto e = static_cast<std::size_t>(element);
  return {t.node1[e], t.node2[e], t.node3[e], t.node4[e], t.node5[e], t.node6[e]};
}

/// Whether an element is a triangle, not a runner element or a connector.
inline bool isTriangle(int element) { return elementTable.node3[static_cast<std::size_t>(element)] != 0; }

/// Nodes 1 to 3 of an element; the third is 0 where it is no triangle.
inline std::array<int, 3> cornerNodesOf(int element) {
  const auto e = static_cast<std::size_t>(element);
  return {elementTable.node1[e], elementTable.node2[e], elementTable.node3[e]};
}

/// Coordinates of nodes 1 to 3 of a triangle.
inline std::array<Vector3, 3> cornersOf(int element) {
  const auto e = static_cast<std::size_t>(element);
  return {positionOf(elementTable.node1[e]), positionOf(elementTable.node2[e]),
          positionOf(elementTable.node3[e])};
}

}  // namespace keld
