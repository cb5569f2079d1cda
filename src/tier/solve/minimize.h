// The V*-cycle's step: the coarse correction scaled so that the energy of the error is least.
// Called by the cycle where nstar_typ is set.
#pragma once

#include "tier/solve/cycle_state.h"

namespace tier {

/// Keeps u of the start level, and with nstar_typ 3 of the level below, as it is before the correction.
void keep_before_correction(cycle_state& s, int level_start, int k);

/// With c the kept u, r = f - A c and e = u - c:  u <- c + (e, r) / (e, A e) e. With nstar_typ 3 the next
/// level's correction is a second direction, and the 2 x 2 normal equations are solved.
/// Errors: 200 "Zero pivot in improving corrections (minimize)".
void minimize(cycle_state& s, int level_start);

}  // namespace tier
