// Systems of thin walls for the races of solvers: plates, boxes, ribbed plates and domes of any size and edge
// length, and walls like those of real parts, of uneven thickness and with slender triangles.
#pragma once

#include <string>
#include <vector>

#include "scalar_systems.h"

namespace bench {

struct wall_system {
  linear_system s;            // three functions; points by wedge node
  std::vector<int> block;     // mesh node of each row
  std::vector<double> modes;  // rigid motions by row, six one after the other
};

/// kind: plate, ribbed, dome, box; about `unknowns` rows; edge over wall of the grid's squares.
/// uneven: thickness of 0.5 to 1.5 times the wall, from triangle to triangle; slender: cells of that ratio;
/// load "thermal" of frozen-in stress and cooling, or "random".
wall_system make_walls(const std::string& kind, int unknowns, double edge_over_wall, bool uneven = false,
                       double slender = 1.0, bool random_load = false);

}  // namespace bench
