// Freedoms of the wedge nodes and the frame of the boundary nodes; see the header.
#include "model/restraint/restraint.h"

#include <algorithm>
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

int geometryNumberOf(int wedgeNode) {
  const std::vector<int>& map = wedgeNumbering.nodeToNewNode;
  return static_cast<int>(std::find(map.begin(), map.end(), wedgeNode) - map.begin());
}

[[noreturn]] void failOnArea(const BoundaryNodes& held, double area) {
  vPrintMessage(1, message::D5014, area);
  vPrintMessage(1, message::D5014Second);
  if (boundaryNodes.size() > 1) {
    vPrintMessage(
        1,
        "                    They are nodes %d, %d and %d of one of the %zu pieces of the part: merge "
        "its nodes with those of the others, or take it out\n",
        geometryNumberOf(held.boundaryNode1), geometryNumberOf(held.boundaryNode2),
        geometryNumberOf(held.boundaryNode3), boundaryNodes.size());
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
  const auto n = static_cast<std::size_t>(node);
  freedoms.nodeRestraint[n] = code;
  freedoms.nodeFrame[n] = frame;
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
  freedoms.nodeFrame.assign(freedoms.nodeRestraint.size(), 0);
  restraintFrames.clear();
  for (const BoundaryNodes& held : boundaryNodes) {
    const auto frame = static_cast<int>(restraintFrames.size());
    restraintFrames.push_back(frameOf(held));
    restrain(held.boundaryNode1, -1, frame);
    restrain(held.boundaryNode2, -2, frame);
    restrain(held.boundaryNode3, -3, frame);
  }
  freedoms.freeDofCount = freedoms.dofCount - 6 * static_cast<int>(boundaryNodes.size());
  volumePass();
  vPrintMessage(1, "   Degree of freedom = %ld\n", 3L * nodeTable.nodeCount);
  vCloseMessageFile();
}

}  // namespace keld
