// The cycle over the levels as a preconditioner. Called by conjugate gradients on level 1.
#pragma once

#include "tier/aggregation/block_level.h"

namespace tier::aggregation {

/// z <- M^-1 r, both in the caller's order of rows, [0..rows-1]. Chebyshev before and behind the coarse
/// level; level 2 is visited once, and from there on the next level is solved by one cycle (V), two (W), or
/// two steps of flexible conjugate gradients with the cycle as their preconditioner (K), of which the second
/// is skipped when the first brings the residual to a quarter. Notay, Vassilevski, Numer. Linear Algebra
/// Appl. 15 (2008) 473-487. No allocation.
void precondition(aggregation_hierarchy& h, const double* r, double* z);

/// x of level k (2 or above) from its f, which is changed.
void solve_coarse(aggregation_hierarchy& h, int k);

}  // namespace tier::aggregation
