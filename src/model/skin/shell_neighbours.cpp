// Edge incidence of the skin mesh, as compressed lists.
#include "model/skin/shell_neighbours.h"

#include <array>

#include "input/mesh_access.h"

namespace keld {

ShellTables shell;

namespace {

bool holds(int e, int node) {
  return elementTable.node1[e] == node || elementTable.node2[e] == node || elementTable.node3[e] == node;
}

/// The shorter of the two nodes' lists: an element that holds both stands in either, in the same order.
int withShorterList(const IncidenceLists& lists, int nodeA, int nodeB) {
  return lists.count(nodeA) <= lists.count(nodeB) ? nodeA : nodeB;
}

template <class Visit>
void forEachEdgeNeighbour(const IncidenceLists& trianglesAtNode, int e, Visit visit) {
  const auto c = cornerNodesOf(e);
  for (std::size_t edge = 0; edge < 3; ++edge) {
    const int a = c[edge], b = c[(edge + 1) % 3];
    const int shorter = withShorterList(trianglesAtNode, a, b);
    for (const int* k = trianglesAtNode.begin(shorter); k != trianglesAtNode.end(shorter); ++k)
      if (*k != e && holds(*k, a) && holds(*k, b)) visit(*k);
  }
}

}  // namespace

IncidenceLists edgeNeighbours(const IncidenceLists& trianglesAtNode) {
  IncidenceLists table;
  table.start.assign(elementTable.elementCount + 1, 0);
  table.item.assign(0, 0);
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    table.start[e] = table.item.rows() + 1;
    if (isTriangle(e)) forEachEdgeNeighbour(trianglesAtNode, e, [&](int k) { table.item.push_back(k); });
  }
  table.start.back() = table.item.rows() + 1;
  return table;
}

bool onOneTriangle(const IncidenceLists& trianglesAtNode, int nodeA, int nodeB) {
  const int shorter = withShorterList(trianglesAtNode, nodeA, nodeB);
  for (const int* k = trianglesAtNode.begin(shorter); k != trianglesAtNode.end(shorter); ++k)
    if (holds(*k, nodeA) && holds(*k, nodeB)) return true;
  return false;
}

}  // namespace keld
