// Thinning of coarse operators. Called by create_levels when ntr asks for it.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

/// Drops off-diagonals with |a_ij| <= eps a_ii onto the diagonal of their row, so that row sums stay.
/// by_rows: each row by itself. Otherwise an entry goes only together with its counterpart (j, i); ierr 152
/// where there is none, and for a diagonal that ends at 0 or below.
void galerkin_truncate(level& lv, double eps, bool by_rows);

}  // namespace tier
