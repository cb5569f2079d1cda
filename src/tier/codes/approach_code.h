// Decoding of nsolve: approach, smoother type, primary matrix and
// interpolation weights. Called by tier_input.
#pragma once

#include "tier/codes/call_arguments.h"
#include "tier/store/controls.h"

namespace tier {

/// nsolve, or nsolve_default in the place of 0.
int approach_or_default(int nsolve);

/// Fills the approach group of the controls. A request that the given system cannot meet is changed, with a
/// warning -1; errors: 20 for a digit out of range, 40 for a short iu, 50 where a smoother lacks ip or norms
/// of blocks are asked for in a scalar system, 80.
void read_approach(controls& c, const call_arguments& call);

}  // namespace tier
