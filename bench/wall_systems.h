// Systems of thin walls for the races of solvers: plates, boxes, ribbed plates and domes of any size and edge
// length, and walls like those of real parts, of uneven thickness and with slender triangles.
#pragma once

#include <string>
#include <vector>

#include "model/solvers/aggregation_tuning.h"
#include "scalar_systems.h"

namespace bench {

struct wall_system {
  linear_system s;                 // three functions; points by wedge node
  std::vector<int> block;          // mesh node of each row
  std::vector<double> modes;       // rigid motions by row, six one after the other
  keld::AggregationTuning tuning;  // as the analysis chooses it
};

/// What a system is made of.
struct wall_request {
  std::string kind;             // plate, ribbed, dome, box
  int unknowns = 0;             // about so many rows
  double edge_over_wall = 1.0;  // of the grid's squares
  double slender = 1.0;         // cells of that ratio
  bool uneven = false;          // thickness of 0.5 to 1.5 times the wall, from triangle to triangle
  bool random_load = false;     // in place of that of frozen-in stress and cooling
  bool facets = false;          // in place of wedges
};

wall_system make_walls(const wall_request& w);

}  // namespace bench
