// Set-up of smoothed aggregation: points, levels, bounds, dense factor. Called by tier_main in place of the
// classical set-up where the parameter naggregation asks for it.
#pragma once

#include "tier/aggregation/block_level.h"
#include "tier/store/controls.h"

namespace tier::aggregation {

/// Makes the hierarchy over level 1, the caller's matrix.
void set_up(aggregation_hierarchy& h, const level& fine, const controls& c, const options& chosen);

/// New matrices on all levels, with the points, aggregates and interpolation that are there.
void renew(aggregation_hierarchy& h, const level& fine);

}  // namespace tier::aggregation
