// The near-null vectors of level 1: as the caller gave them, rigid-body modes from coordinates, or a constant
// for each function. Called by set-up; the entries stand in modes.cpp of the frame.
#pragma once

#include <vector>

#include "tier/aggregation/block_rows.h"
#include "tier/aggregation/points.h"
#include "tier/aggregation/tentative.h"
#include "tier/store/context.h"

namespace tier::aggregation {

/// What the caller gave; kept until it clears it or TIER_LEAVE.
struct given_modes {
  int rows = 0, count = 0;          // count 0: none
  std::vector<double> values;       // rows x count by columns
  int dimension = 0;                // 0: no coordinates
  std::vector<double> coordinates;  // dimension x rows
};
extern const per_context<given_modes> modes_of_caller;

/// Number of near-null vectors that level 1 will have. Modes or coordinates of another system end the call
/// (50), and so do coordinates for other functions than translations in
/// 2 or 3 directions, or 3 with rotations.
int count_modes(const level& fine, int functions);

/// Vectors by points, b x m blocks.
void make_modes(const level& fine, int functions, const point_layout& points, near_null& vectors);

}  // namespace tier::aggregation
