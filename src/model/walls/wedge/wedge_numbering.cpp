// Renumbering of the used geometry nodes into the two layers of wedge nodes; see the header.
#include "model/walls/wedge/wedge_numbering.h"

#include <utility>

#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "run/base/column.h"

namespace keld {

namespace {

/// Numbers 1..T in order of first use by a corner of a triangle; returns T.
int numberTriangleNodes() {
  const ElementTable& t = elementTable;
  Column<int>& map = wedgeNumbering.nodeToNewNode;
  int count = 0;
  for (int e = 1; e <= t.partElementCount; ++e) {
    for (const auto* column : {&t.node1, &t.node2, &t.node3}) {
      int& number = map[(*column)[e]];
      if (number == 0) number = ++count;
    }
  }
  return count;
}

/// Numbers -(2T + 1), -(2T + 2), ... for nodes that runner elements alone use.
void numberRunnerNodes(int layer) {
  const ElementTable& t = elementTable;
  Column<int>& map = wedgeNumbering.nodeToNewNode;
  int last = 2 * layer;
  for (int e = t.partElementCount + 1; e <= t.elementCount; ++e) {
    for (const auto* column : {&t.node1, &t.node2}) {
      int& number = map[(*column)[e]];
      if (number == 0) number = -++last;
    }
  }
}

void renumberElements(int layer) {
  ElementTable& t = elementTable;
  const Column<int>& map = wedgeNumbering.nodeToNewNode;
  for (auto* column : {&t.node4, &t.node5, &t.node6}) column->assign(t.elementCount, 0);
  for (int e = 1; e <= t.elementCount; ++e) {
    const bool triangle = e <= t.partElementCount;
    const auto renumber = [&](int& lower, int& upper) {
      const int number = map[lower];
      lower = number < 0 ? -number : number;
      if (triangle) upper = number + layer;
    };
    renumber(t.node1[e], t.node4[e]);
    renumber(t.node2[e], t.node5[e]);
    if (triangle) renumber(t.node3[e], t.node6[e]);
  }
}

void moveCoordinates(int layer) {
  const int geometryNodes = wedgeNumbering.geometryNodeCount;
  nodeTable.nodeCount = geometryNodes + layer;
  for (auto* column : {&nodeTable.x, &nodeTable.y, &nodeTable.z}) {
    Column<double> moved(nodeTable.nodeCount, 0.0);
    for (int n = 1; n <= geometryNodes; ++n) {
      const int number = wedgeNumbering.nodeToNewNode[n];
      if (number == 0) continue;
      moved[number < 0 ? -number : number] = (*column)[n];
      if (number > 0) moved[number + layer] = (*column)[n];
    }
    *column = std::move(moved);
  }
}

}  // namespace

void renumberWedgeNodes() {
  wedgeNumbering.geometryNodeCount = nodeTable.nodeCount;
  wedgeNumbering.nodeToNewNode.assign(nodeTable.nodeCount, 0);
  const int layer = numberTriangleNodes();
  numberRunnerNodes(layer);
  renumberElements(layer);
  moveCoordinates(layer);
  wedgeNumbering.wedgeNodeCount = 2 * layer;
  for (BoundaryNodes& held : boundaryNodes) {
    for (int* node : {&held.boundaryNode1, &held.boundaryNode2, &held.boundaryNode3}) {
      *node = wedgeNumbering.nodeToNewNode[*node];
    }
  }
}

}  // namespace keld
