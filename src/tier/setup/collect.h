// Points in a split: lifts states from the primary unknown or the primary matrix to all variables of a point.
// Called by driver_split in point-based runs.
#pragma once

#include "tier/frame/hierarchy.h"

namespace tier {

/// Every variable of a point takes the state of the point's primary unknown; a point without it becomes C.
void collect(level& lv, int nprim);

/// Every variable takes the state that its point has in ibcg.
void collect_i(level& lv);

}  // namespace tier
