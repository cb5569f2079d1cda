// Freedoms of the wedge nodes and the frame of the boundary nodes; see the header.
#include "model/restraint/restraint.h"

#include <algorithm>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/system/loads.h"
#include "run/base/column.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/streams.h"

namespace keld {

namespace {

void pairNodes() {
  const ElementTable& t = elementTable;
  const auto pair = [](int lower, int upper) {
    wedgeNumbering.nodeMate[lower] = upper;
    wedgeNumbering.nodeMate[upper] = lower;
  };
  for (int e = 1; e <= t.partElementCount; ++e) {
    pair(t.node1[e], t.node4[e]);
    pair(t.node2[e], t.node5[e]);
    pair(t.node3[e], t.node6[e]);
  }
}

int geometryNumberOf(int wedgeNode) {
  const Column<int>& map = wedgeNumbering.nodeToNewNode;
  return static_cast<int>(std::find(map.begin(), map.end(), wedgeNode) - map.begin()) + 1;
}

[[noreturn]] void failOnArea(const BoundaryNodes& held, double area) {
  vPrintMessage(1, message::D5014, area);
  vPrintMessage(1, message::D5014Second);
  if (boundaryNodes.rows() > 1) {
    vPrintMessage(
        1,
        "                    They are nodes %d, %d and %d of one of the %d pieces of the part: merge "
        "its nodes with those of the others, or take it out\n",
        geometryNumberOf(held.boundaryNode1), geometryNumberOf(held.boundaryNode2),
        geometryNumberOf(held.boundaryNode3), boundaryNodes.rows());
  }
  vEndRun();
}

/// ex from boundary node 1 to 2, ez normal to the plane of the three.
RestraintFrame frameOf(const BoundaryNodes& held) {
  const Vector3 p1 = positionOf(held.boundaryNode1), p2 = positionOf(held.boundaryNode2);
  const Vector3 p3 = positionOf(held.boundaryNode3);
  const double area = triangleArea(p1, p2, p3);
  if (!(area > 1e-8)) failOnArea(held, area);
  const auto unit = [](const Vector3& v) { return (1.0 / norm(v)) * v; };
  RestraintFrame frame;
  frame.ex = unit(p2 - p1);
  frame.ez = unit(cross(p2 - p1, p3 - p1));
  frame.ey = unit(cross(frame.ez, p2 - p1));
  return frame;
}

void restrain(int node, int code, int frame) {
  freedoms.nodeRestraint[node] = code;
  freedoms.nodeFrame[node] = frame;
}

}  // namespace

void numberFreedoms() {
  const int nodes = wedgeNumbering.wedgeNodeCount;
  wedgeNumbering.nodeMate.assign(nodes, 0);
  pairNodes();
  // Every wedge node is one of a triangle: the renumbering has made them so.
  freedoms.nodeRestraint.assign(nodes, 1);
  freedoms.nodeDofCount.assign(nodes, 3);
  freedoms.nodeFirstDof.assign(nodes, 0);
  for (int n = 1; n <= nodes; ++n) freedoms.nodeFirstDof[n] = 3 * (n - 1) + 1;
  freedoms.dofCount = 3 * nodes;
}

void setUpRestraint() {
  freedoms.nodeFrame.assign(freedoms.nodeRestraint.rows(), 0);
  restraintFrames = {};
  for (const BoundaryNodes& held : boundaryNodes) {
    restraintFrames.push_back(frameOf(held));
    const int frame = restraintFrames.rows();
    restrain(held.boundaryNode1, -1, frame);
    restrain(held.boundaryNode2, -2, frame);
    restrain(held.boundaryNode3, -3, frame);
  }
  freedoms.freeDofCount = freedoms.dofCount - 6 * boundaryNodes.rows();
  volumePass();
  vPrintMessage(1, "   Degree of freedom = %ld\n", 3L * nodeTable.nodeCount);
  vCloseMessageFile();
}

}  // namespace keld
