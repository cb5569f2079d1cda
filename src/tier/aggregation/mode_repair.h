// Repair of the near-null vectors of level 1. Called by set-up before aggregates take them.
#pragma once

#include "tier/aggregation/block_matrix.h"
#include "tier/aggregation/tentative.h"

namespace tier::aggregation {

/// Sweeps of symmetric block Gauss-Seidel, forward and backward, on A N = 0 for m vectors: they take out what
/// is wrong in single rows, as in rows that count in other axes. Brezina and others, SIAM Review 47 (2005)
/// 317-346.
template <class T>
void repair_modes(const block_matrix<T>& a, const from_zero<T>& inverse, int m, int sweeps,
                  near_null& vectors);

}  // namespace tier::aggregation
