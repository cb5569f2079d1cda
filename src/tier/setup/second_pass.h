// Second pass of the splitting: fine variables with strong ties among themselves become C.
// Called by driver_split.
#pragma once

#include "tier/setup/couplings.h"
#include "tier/setup/pcol.h"

namespace tier {

/// In row order and at once: variable i becomes C when sum |a_ij| over fine j exceeds limit * a_ii; nprim
/// above 0: only variables of that kind. Updates the counts and returns how many changed.
int second_pass(const couplings& m, double limit, int nprim, view<int> state, split_counts& n);

}  // namespace tier
