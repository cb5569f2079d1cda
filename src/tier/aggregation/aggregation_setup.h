// Set-up of smoothed aggregation: points, levels, bounds, dense factor. Called by tier_main in place of the
// classical set-up where the parameter naggregation asks for it.
#pragma once

#include "tier/aggregation/block_level.h"
#include "tier/store/controls.h"

namespace tier::aggregation {

/// Reads the named parameters of aggregation; a value out of range ends the call (20), a combination with
/// what aggregation doesn't do (50): a matrix that isn't said to be symmetric, one-level methods, scaling of
/// rows or columns, several functions without points.
options read_options(const controls& c);

/// Makes the hierarchy over level 1, the caller's matrix.
void set_up(aggregation_hierarchy& h, const level& fine, const controls& c);

/// New matrices on all levels, with the points, aggregates and interpolation that are there.
void renew(aggregation_hierarchy& h, const level& fine);

}  // namespace tier::aggregation
