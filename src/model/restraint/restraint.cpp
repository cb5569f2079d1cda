// Freedoms of the wedge nodes and the frame of the boundary nodes; see the header.
#include "model/restraint/restraint.h"

#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/system/loads.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/streams.h"

namespace keld {

namespace {

void pairNodes() {
  const ElementTable& t = elementTable;
  const auto pair = [](int lower, int upper) {
    wedgeNumbering.nodeMate[static_cast<std::size_t>(lower)] = upper;
    wedgeNumbering.nodeMate[static_cast<std::size_t>(upper)] = lower;
  };
  for (std::size_t e = 1; e <= static_cast<std::size_t>(t.partElementCount); ++e) {
    pair(t.node1[e], t.node4[e]);
    pair(t.node2[e], t.node5[e]);
    pair(t.node3[e], t.node6[e]);
  }
}

void markRestrained(int node, std::initializer_list<int> directions) {
  const int first = freedoms.nodeFirstDof[static_cast<std::size_t>(node)];
  for (int direction : directions) {
    freedoms.dofRestrained[static_cast<std::size_t>(first + direction - 1)] = 1;
  }
}

/// ex from boundary node 1 to 2, ez normal to the plane of the three.
void setUpFrame() {
  const Vector3 p1 = positionOf(boundaryNodes.boundaryNode1), p2 = positionOf(boundaryNodes.boundaryNode2);
  const Vector3 p3 = positionOf(boundaryNodes.boundaryNode3);
  const double area = triangleArea(p1, p2, p3);
  if (!(area > 1e-8)) {
    vPrintMessage(1, message::D5014, area);
    vPrintMessage(1, message::D5014Second);
    vEndRun();
  }
  const auto unit = [](const Vector3& v) { return (1.0 / norm(v)) * v; };
  restraintFrame.ex = unit(p2 - p1);
  restraintFrame.ez = unit(cross(p2 - p1, p3 - p1));
  restraintFrame.ey = unit(cross(restraintFrame.ez, p2 - p1));
}

}  // namespace

void numberFreedoms() {
  const int nodes = wedgeNumbering.wedgeNodeCount;
  const auto size = static_cast<std::size_t>(nodes) + 1;
  wedgeNumbering.nodeMate.assign(size, 0);
  pairNodes();
  // Every wedge node is one of a triangle: the renumbering has made them so.
  freedoms.nodeRestraint.assign(size, 1);
  freedoms.nodeDofCount.assign(size, 3);
  freedoms.nodeFirstDof.assign(size, 0);
  for (int n = 1; n <= nodes; ++n) freedoms.nodeFirstDof[static_cast<std::size_t>(n)] = 3 * (n - 1) + 1;
  freedoms.dofCount = 3 * nodes;
}

void setUpRestraint() {
  const BoundaryNodes& b = boundaryNodes;
  setUpFrame();
  freedoms.nodeRestraint[static_cast<std::size_t>(b.boundaryNode1)] = -1;
  freedoms.nodeRestraint[static_cast<std::size_t>(b.boundaryNode2)] = -2;
  freedoms.nodeRestraint[static_cast<std::size_t>(b.boundaryNode3)] = -3;
  freedoms.dofRestrained.assign(static_cast<std::size_t>(freedoms.dofCount) + 1, 0);
  markRestrained(b.boundaryNode1, {1, 2, 3});
  markRestrained(b.boundaryNode2, {2, 3});
  markRestrained(b.boundaryNode3, {3});
  freedoms.freeDofCount = freedoms.dofCount - 6;
  volumePass();
  vPrintMessage(1, "   Degree of freedom = %ld\n", 3L * nodeTable.nodeCount);
  vCloseMessageFile();
}

}  // namespace keld
