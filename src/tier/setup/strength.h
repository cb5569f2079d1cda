// Strength step of a level: stopping rules that need no split, checks, sorting of rows.
// Called by create_levels.
#pragma once

#include "tier/setup/couplings.h"
#include "tier/setup/setup_state.h"

namespace tier {

/// Finds the strong couplings of level k, in its matrix, its primary matrix, or both.
coarsening find_strong_couplings(setup_state& t, int k);

/// The rows of the level's primary matrix.
couplings primary_couplings(level& lv);

/// Digits that choose what this library does not hold end the call with ierr 30 or 80.
void check_released(const controls& c, const setup_options& o);

/// Combinations of approach, internal and nprim that make no sense end the call with ierr 50.
void check_approach(const controls& c);

}  // namespace tier
