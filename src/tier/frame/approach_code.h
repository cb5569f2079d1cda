// Decoding of nsolve: approach, smoother type, primary matrix and interpolation weights. Called by
// tier_input.
#pragma once

#include "tier/frame/call_arguments.h"
#include "tier/frame/controls.h"

namespace tier {

/// nsolve, or nsolve_default in the place of 0.
int approach_or_default(int nsolve);

/// The primary matrix is to be made from norms of the blocks of points.
inline bool norm_based(const controls& c) { return c.internal == 3 || c.internal == 4; }

/// Fills the approach group of the controls. A request that the given system cannot meet is changed, with a
/// warning -1; errors: 20 for a digit out of range, 40 for a short iu, 50 where a smoother lacks ip or norms
/// of blocks are asked for in a scalar system, 80.
void read_approach(controls& c, const call_arguments& call);

}  // namespace tier
