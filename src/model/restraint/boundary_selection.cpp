// Choice of the three boundary nodes, in geometry numbers; declared with the other restraint stages.
#include <array>
#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/model_tables.h"
#include "model/restraint/restraint.h"
#include "run/base/failure.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

/// Distinct nodes of triangles in element order and corner order.
std::vector<int> partNodes() {
  const ElementTable& t = elementTable;
  std::vector<char> seen(static_cast<std::size_t>(nodeTable.nodeCount) + 1, 0);
  std::vector<int> nodes;
  for (int e = 1; e <= t.partElementCount; ++e) {
    for (const auto* column : {&t.node1, &t.node2, &t.node3}) {
      const int node = (*column)[static_cast<std::size_t>(e)];
      if (seen[static_cast<std::size_t>(node)]) continue;
      seen[static_cast<std::size_t>(node)] = 1;
      nodes.push_back(node);
    }
  }
  return nodes;
}

Vector3 meanPosition(const std::vector<int>& nodes) {
  Vector3 sum{};
  for (int node : nodes) sum = sum + positionOf(node);
  return sum / static_cast<double>(nodes.size());
}

/// The earliest node nearest to a point.
int nearestTo(const Vector3& point, const std::vector<int>& nodes) {
  double best = 1e12;
  int result = nodes.front();
  for (int node : nodes) {
    const double d = distance(point, positionOf(node));
    if (d < best) {
      best = d;
      result = node;
    }
  }
  return result;
}

/// The earliest node farthest from another; that node itself when all lie at its place.
int farthestFrom(int first, const std::vector<int>& nodes) {
  double best = 0.0;
  int result = first;
  for (int node : nodes) {
    const double d = distance(positionOf(first), positionOf(node));
    if (d > best) {
      best = d;
      result = node;
    }
  }
  return result;
}

/// The latest node that spans the largest triangle with two others; the first when there is no third node.
int widestWith(int first, int second, const std::vector<int>& nodes) {
  const Vector3 p1 = positionOf(first), p2 = positionOf(second);
  double best = 0.0;
  int result = first;
  for (int node : nodes) {
    if (node == first || node == second) continue;
    const double area = triangleArea(p1, p2, positionOf(node));
    if (area >= best) {
      best = area;
      result = node;
    }
  }
  return result;
}

/// A node number that the user gave must be that of a node of a triangle.
void checkGivenNodes(const std::array<int, 4>& given, const std::vector<int>& nodes) {
  std::vector<char> used(static_cast<std::size_t>(nodeTable.nodeCount) + 1, 0);
  for (int node : nodes) used[static_cast<std::size_t>(node)] = 1;
  for (std::size_t i = 1; i <= 3; ++i) {
    if (given[i] < 1 || given[i] > nodeTable.nodeCount) {
      vFail(
          "\n !! Error !!  Boundary node %zu of \"%s\" or \"%s\" is %d: a node number from 1 to %d was "
          "expected, or "
          "0 to have all three chosen.\n",
          i, workingFiles.cpu.c_str(), workingFiles.bc1.c_str(), given[i], nodeTable.nodeCount);
    }
    if (!used[static_cast<std::size_t>(given[i])]) {
      vFail(
          "\n !! Error !!  Boundary node %zu of \"%s\" or \"%s\" is %d, which belongs to no triangle: a node "
          "of the "
          "part was expected, or 0 to have all three chosen.\n",
          i, workingFiles.cpu.c_str(), workingFiles.bc1.c_str(), given[i]);
    }
  }
}

}  // namespace

void selectBoundaryNodes() {
  const std::vector<int> nodes = partNodes();
  if (nodes.empty()) {
    vFail("\n !! Error !!  \"%s\" holds runner elements alone: at least one triangle was expected.\n",
          workingFiles.pg1.c_str());
  }
  const Vector3 centre = meanPosition(nodes);
  const std::array<int, 4>& given = processRecord.bcNode;
  BoundaryNodes& chosen = boundaryNodes;
  if (given[1] != 0 && given[2] != 0 && given[3] != 0) {
    checkGivenNodes(given, nodes);
    chosen.boundaryNode1 = given[1];
    chosen.boundaryNode2 = given[2];
    chosen.boundaryNode3 = given[3];
  } else {
    chosen.boundaryNode1 = nearestTo(centre, nodes);
    chosen.boundaryNode2 = farthestFrom(chosen.boundaryNode1, nodes);
    chosen.boundaryNode3 = widestWith(chosen.boundaryNode1, chosen.boundaryNode2, nodes);
  }
  vPrintMessage(1, "   Boundary node 1=   %-d\n", chosen.boundaryNode1);
  vPrintMessage(1, "   Boundary node 2=   %-d\n", chosen.boundaryNode2);
  vPrintMessage(1, "   Boundary node 3=   %-d\n\n", chosen.boundaryNode3);
  chosen.centreOffset = centre - positionOf(chosen.boundaryNode1);
}

}  // namespace keld
