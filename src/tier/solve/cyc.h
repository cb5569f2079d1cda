// One multigrid cycle: V, F, W, VV and their V*-forms. Called by tier_solve and the accelerators.
#pragma once

#include <string_view>

#include "tier/solve/cycle_state.h"

namespace tier {

/// One cycle from level `level_start` down to the coarsest and back, on u of that level. With one level: pre-
/// smoothing, cgsolve, post-smoothing. `reason` stands in traces.
void cyc(cycle_state& s, int level_start, std::string_view reason);

/// Smoothing runs on level k of a cycle that begins on level_start, by ndyn_smo.
int dynamic_sweeps(int ndyn_smo, int level_start, int k);

}  // namespace tier
