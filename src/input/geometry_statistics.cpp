// Statistics and checks of the mesh as the file gives it.
// Called by the input stage behind the main read of ".PG1".
#include "input/geometry_statistics.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "run/base/column.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/streams.h"

namespace keld {
namespace {

constexpr double badTriangleAspect = 10.0;  // at or above it counts
constexpr double badRunnerAspect = 10.0;    // at or below it counts
constexpr double eccentric = 1.5;           // ratio of the two sides of the centre

/// Nodes of elements with node3 other than 0, each once, by number.
std::vector<Vector3> partNodes() {
  Column<char> used(nodeTable.nodeCount, 0);
  const ElementTable& t = elementTable;
  for (int e = 1; e <= t.elementCount; ++e) {
    if (t.node3[e] == 0) continue;
    for (const int node : {t.node1[e], t.node2[e], t.node3[e]}) used[node] = 1;
  }
  std::vector<Vector3> points;
  for (int node = 1; node <= nodeTable.nodeCount; ++node)
    if (used[node]) points.push_back(positionOf(node));
  return points;
}

Extent extentOf(const std::vector<Vector3>& points) {
  Extent extent;
  for (const Vector3& p : points)
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (p[axis] >= extent.most[axis]) extent.most[axis] = p[axis];
      if (p[axis] < extent.least[axis]) extent.least[axis] = p[axis];
    }
  return extent;
}

bool hasMesh() { return elementTable.elementCount >= 1 && nodeTable.nodeCount >= 1; }

}  // namespace

double triangleAspect(double a, double b, double c) {
  const double s = (a + b + c) / 2.0;
  return a * b * c / (4.0 * (s - a) * (s - b) * (s - c));
}

double axisLength(double centre, double least, double most) {
  const double toMost = std::abs(centre - most), toLeast = std::abs(centre - least);
  const double hi = std::max(toMost, toLeast), lo = std::min(toMost, toLeast);
  return hi / lo < eccentric ? hi + lo : 2.0 * lo;
}

std::array<int, 3> axisOrder(const std::array<double, 3>& length) {
  const auto [lx, ly, lz] = length;
  int major = 1;
  if (ly > lx && ly > lz) major = 2;
  if (lz > lx && lz > ly) major = 3;
  switch (major) {
    case 1:
      return ly > lz ? std::array{1, 2, 3} : std::array{1, 3, 2};
    case 2:
      return lx > lz ? std::array{2, 1, 3} : std::array{2, 3, 1};
    default:
      return lx > ly ? std::array{3, 1, 2} : std::array{3, 2, 1};
  }
}

void partCentreAndAxes() {
  if (!hasMesh()) return;
  const std::vector<Vector3> points = partNodes();
  const Extent extent = extentOf(points);
  geometry.gridCentre = occupiedCellCentre(extent, points);

  std::array<double, 3> length{};
  for (std::size_t axis = 0; axis < 3; ++axis)
    length[axis] = axisLength(geometry.gridCentre[axis], extent.least[axis], extent.most[axis]);
  const auto lengthAlong = [&length](int axis) { return length[static_cast<std::size_t>(axis - 1)]; };
  const auto [major, middle, minor] = axisOrder(length);
  geometry.axisMajor = major;
  geometry.axisMiddle = middle;
  geometry.axisMinor = minor;
  geometry.lengthMajor = lengthAlong(major);
  geometry.lengthMiddle = lengthAlong(middle);
  geometry.lengthMinor = lengthAlong(minor);
}

void checkGeometry() {
  vPrintMessage(0, "\n # Check data structure: geometry, parameter ......\n");
  vPrintMessage(1, "\n");
  bool failed = false;
  const auto require = [&failed](bool good, const char* words) {
    if (good) return;
    vPrintMessage(1, "%s", words);
    failed = true;
  };
  require(elementTable.elementCount >= 1, message::D4002);
  require(nodeTable.nodeCount >= 1, message::D4003);
  require(geometry.thicknessFactor > 0.0, message::D4004);
  require(geometry.coordinateFactor > 0.0, message::D4005);
  if (failed) vEndRun();
}

void echoGeometry() {
  const ElementTable& t = elementTable;
  int badTriangles = 0, badRunners = 0;
  for (int e = 1; e <= t.elementCount; ++e) {
    const Vector3 p1 = positionOf(t.node1[e]), p2 = positionOf(t.node2[e]);
    if (t.node3[e] == 0) {
      badRunners += distance(p1, p2) / (2.0 * t.thickness[e]) <= badRunnerAspect;
    } else {
      const Vector3 p3 = positionOf(t.node3[e]);
      badTriangles +=
          triangleAspect(distance(p1, p2), distance(p2, p3), distance(p3, p1)) >= badTriangleAspect;
    }
  }
  vPrintMessage(1, "   The # of tri-element with aspect ratio > 10 = %d\n", badTriangles);
  vPrintMessage(1, "   The # of runner-element with aspect ratio < 10  = %d\n", badRunners);

  const bool surface = ModelKind == 0;
  vPrintMessage(1, "   No. of nodes...................= %-6d\n", nodeTable.nodeCount);
  if (surface) vPrintMessage(1, "   Input Gate  No. ...............= %-6d\n", 0);  // nothing counts here
  vPrintMessage(1, "   No. of elements................= %-6d\n", t.elementCount);
  if (surface) {
    vPrintMessage(1, "       No. of Part Elements.......= %-6d\n",
                  t.elementCount - geometry.runnerElementCount);
    vPrintMessage(1, "       No. of Sprue/Runer Elements= %-6d\n", geometry.runnerElementCount);
    vPrintMessage(1, "   Thickness  Factor..............= %-6.2lf\n", geometry.thicknessFactor);
  }
  vPrintMessage(1, "   Coordinate factor..............= %-6.2lf\n", geometry.coordinateFactor);
}

}  // namespace keld
