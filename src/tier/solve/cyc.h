// One multigrid cycle: V, F, W, VV and their V*-forms. Called by tier_solve and the accelerators.
#pragma once

#include <string_view>

#include "tier/store/choices.h"

namespace tier {

struct cycle_state;

struct cycle_options {
  cycle_kind kind = cycle_kind::v;     // igam
  star_cycle star = star_cycle::none;  // nstar_typ
  int dynamic_sweeps = 0;              // see below (ndyn_smo)
};

/// One cycle from level `level_start` down to the coarsest and back, on u of that level. With one level: pre-
/// smoothing, cgsolve, post-smoothing. `reason` stands in traces.
void cyc(cycle_state& s, int level_start, std::string_view reason);

/// Smoothing runs on level k of a cycle that begins on level_start, by ndyn_smo: 0 one, 10 two below that
/// level, 11 one more on each, 20 and 21 the same from the second level below it on.
int dynamic_sweeps(int ndyn_smo, int level_start, int k);

}  // namespace tier
