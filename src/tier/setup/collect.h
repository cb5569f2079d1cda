// Points in a split: lifts states from the primary unknown or the primary matrix to all variables of a point.
// Called by driver_split in point-based runs.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

/// Every variable of a point takes the state of the point's primary unknown; a point without it becomes C.
/// force_unusable (vio_dd): so does a point with a sorted row of the matrix that cannot be interpolated.
void collect(level& lv, int nprim, bool force_unusable);

/// Every variable takes the state that its point has in ibcg; force_unusable as above.
void collect_i(level& lv, bool force_unusable);

}  // namespace tier
