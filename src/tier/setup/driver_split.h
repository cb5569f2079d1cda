// Splitting step of a level: first pass, aggressive coarsening, second pass, points, stopping rules.
// Called by create_levels.
#pragma once

#include "tier/setup/setup_state.h"

namespace tier {

/// Splits level k; icg holds the states afterwards.
coarsening driver_split(setup_state& t, int k, bool aggressive);

}  // namespace tier
