// The door of smoothed aggregation: its parameters become its options.
// Called by the steps of a call when it is checked and before a set-up.
#pragma once

#include "tier/aggregation/block_level.h"
#include "tier/store/controls.h"

namespace tier {

/// Reads the named parameters of aggregation; a value out of range ends the call (20), a combination with
/// what aggregation doesn't do (50): a matrix that isn't said to be symmetric, one-level methods, several
/// functions without points.
aggregation::options options_of_aggregation(const controls& c);

}  // namespace tier
