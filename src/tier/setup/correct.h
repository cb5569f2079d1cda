// Repair of coarse operators whose diagonal is not positive: changes the interpolation that feeds the bad
// rows. Called by the Galerkin step of create_levels, which forms the product again afterwards.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

/// Rows of `coarse` with a diagonal of at most 0; bad [1..n] gets 1 for these, 0 else.
int count_nonpositive(const level& coarse, view<int> bad);

/// F rows of `fine` lose their negative weights in bad columns; the rest is scaled to the same row sum. A row
/// that has no rest to scale stays.
void correct_f(level& fine, int coarse_variables, view<const int> bad);

/// Weights of F rows in bad columns are halved.
void correct_w(level& fine, int coarse_variables, view<const int> bad);

}  // namespace tier
