// Rigid motions by reduced row; see the header.
#include "model/rigid_modes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "input/mesh_access.h"
#include "model/model_tables.h"
#include "model/walls/wedge/wedge_shape.h"
#include "run/base/column.h"

namespace keld {

namespace {

/// Place of each mesh node, by lower wedge node [1..T], and half the wall there as a vector.
struct NodePlaces {
  Column<Vector3> position, offset;
  Vector3 middle{};
  double half = 0.0;  // cm, of the longest side of the box around the part
};

NodePlaces nodePlaces() {
  const int count = wedgeNumbering.wedgeNodeCount / 2;
  NodePlaces places{Column<Vector3>(count), Column<Vector3>(count)};
  Column<int> triangles(count, 0);
  Vector3 low{INFINITY, INFINITY, INFINITY}, high = -1.0 * low;
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const auto corner = cornersOf(e);
    const Vector3 d = wedgeOffset(corner, elementTable.thickness[e]).d;
    const auto nodes = wedgeNodesOf(e);
    for (std::size_t i = 0; i < 3; ++i) {
      const int node = nodes[i];
      places.position[node] = corner[i];
      places.offset[node] = places.offset[node] + d;
      ++triangles[node];
      for (std::size_t c = 0; c < 3; ++c) {
        low[c] = std::min(low[c], corner[i][c]);
        high[c] = std::max(high[c], corner[i][c]);
      }
    }
  }
  for (int node = 1; node <= count; ++node)
    if (triangles[node] > 0) places.offset[node] = (1.0 / triangles[node]) * places.offset[node];
  places.middle = 0.5 * (low + high);
  for (std::size_t c = 0; c < 3; ++c) places.half = std::max(places.half, 0.5 * (high[c] - low[c]));
  return places;
}

}  // namespace

std::vector<double> rigidModes(const WallModel& wall) {
  const NodePlaces places = nodePlaces();
  const int rows = freedoms.freeDofCount;
  std::vector<double> modes(static_cast<std::size_t>(rows) * rigidModeCount);
  for (int row = 1; row <= rows; ++row) {
    const int dof = freedoms.freeDofList[row], node = (dof - 1) / 3 + 1;
    const auto component = static_cast<std::size_t>((dof - 1) % 3);
    const int mate = wedgeNumbering.nodeMate[node];
    const bool second = mate < node;
    const int lower = std::min(node, mate);
    const Vector3 arm = (1.0 / places.half) * (places.position[lower] - places.middle),
                  offset = (1.0 / places.half) * places.offset[lower];
    Vector3 axis{};
    axis[component] = 1.0;
    if (freedoms.nodeRestraint[node] != 1) {
      const RestraintFrame& frame = restraintFrames[freedoms.nodeFrame[node]];
      axis = component == 0 ? frame.ex : component == 1 ? frame.ey : frame.ez;
    }
    double* entry = modes.data() + (row - 1);
    for (std::size_t mode = 0; mode < rigidModeCount; ++mode, entry += rows) {
      Vector3 shift{}, turn{};
      (mode < 3 ? shift : turn)[mode % 3] = 1.0;
      const auto motion = wall.rigidMotion(shift, turn, arm, offset, places.half);
      *entry = dot(axis, motion[second ? 1 : 0]);
    }
  }
  return modes;
}

}  // namespace keld
