// Sizes of the work arrays of levels 2 and up, from the estimates of the call. Called by tier_main and, while
// levels are made, by create_levels.
#pragma once

#include <cstdint>

#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Numbers of elements by group: a, ja; vectors; points; w, jw.
struct work_dimensions {
  std::int64_t a = 0, u = 0, v = 0, w = 0;
};

/// Expected sizes: complexity * 1.001 * base, 1.1 * base for a complexity below 1; interpolation counts
/// w_avrge * 1.005 for each variable of all levels. Errors: 10 for a system above ihuge or an estimate that a
/// 32-bit index cannot hold. Nothing is allocated by them.
work_dimensions tier_dimensions(const controls& c);

/// What levels 2 to `levels` hold.
work_dimensions used_dimensions(const hierarchy& h, int levels);

/// Ends the call with ierr 10 where levels 2 to `levels` hold more than was estimated and iextent is 0, and
/// with 60 where an array is longer than ihuge. To be called when a level stands.
void check_dimensions(const hierarchy& h, int levels, const controls& c);

}  // namespace tier
