// Rigid motions by reduced row; see the header.
#include "model/rigid_modes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "input/mesh_access.h"
#include "model/model_tables.h"
#include "model/walls/wedge/wedge_shape.h"

namespace keld {

namespace {

/// Place of each mesh node, by lower wedge node [1..T], and half the wall there as a vector.
struct NodePlaces {
  std::vector<Vector3> position, offset;
  Vector3 middle{};
  double half = 0.0;  // cm, of the longest side of the box around the part
};

NodePlaces nodePlaces() {
  const std::size_t count = wedgeNumbering.nodeMate.size();
  NodePlaces places{std::vector<Vector3>(count), std::vector<Vector3>(count)};
  std::vector<int> triangles(count, 0);
  Vector3 low{INFINITY, INFINITY, INFINITY}, high = -1.0 * low;
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const auto corner = cornersOf(e);
    const Vector3 d = wedgeOffset(corner, elementTable.thickness[static_cast<std::size_t>(e)]).d;
    const auto nodes = wedgeNodesOf(e);
    for (std::size_t i = 0; i < 3; ++i) {
      const auto node = static_cast<std::size_t>(nodes[i]);
      places.position[node] = corner[i];
      places.offset[node] = places.offset[node] + d;
      ++triangles[node];
      for (std::size_t c = 0; c < 3; ++c) {
        low[c] = std::min(low[c], corner[i][c]);
        high[c] = std::max(high[c], corner[i][c]);
      }
    }
  }
  for (std::size_t node = 1; node < count; ++node)
    if (triangles[node] > 0) places.offset[node] = (1.0 / triangles[node]) * places.offset[node];
  places.middle = 0.5 * (low + high);
  for (std::size_t c = 0; c < 3; ++c) places.half = std::max(places.half, 0.5 * (high[c] - low[c]));
  return places;
}

}  // namespace

std::vector<double> rigidModes(const WallModel& wall) {
  const NodePlaces places = nodePlaces();
  const auto rows = static_cast<std::size_t>(freedoms.freeDofCount);
  std::vector<double> modes(rows * rigidModeCount);
  for (std::size_t row = 0; row < rows; ++row) {
    const int dof = freedoms.freeDofList[row + 1], node = (dof - 1) / 3 + 1;
    const auto component = static_cast<std::size_t>((dof - 1) % 3), place = static_cast<std::size_t>(node);
    const int mate = wedgeNumbering.nodeMate[place];
    const bool second = mate < node;
    const auto lower = static_cast<std::size_t>(std::min(node, mate));
    const Vector3 arm = (1.0 / places.half) * (places.position[lower] - places.middle),
                  offset = (1.0 / places.half) * places.offset[lower];
    Vector3 axis{};
    axis[component] = 1.0;
    if (freedoms.nodeRestraint[place] != 1) {
      const RestraintFrame& frame = restraintFrames[static_cast<std::size_t>(freedoms.nodeFrame[place])];
      axis = component == 0 ? frame.ex : component == 1 ? frame.ey : frame.ez;
    }
    for (std::size_t mode = 0; mode < rigidModeCount; ++mode) {
      Vector3 shift{}, turn{};
      (mode < 3 ? shift : turn)[mode % 3] = 1.0;
      const auto motion = wall.rigidMotion(shift, turn, arm, offset, places.half);
      modes[mode * rows + row] = dot(axis, motion[second ? 1 : 0]);
    }
  }
  return modes;
}

}  // namespace keld
