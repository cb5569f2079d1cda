// The smoothed interpolation and its transposed index. Called by set-up once per level.
#pragma once

#include "tier/aggregation/block_kernels.h"
#include "tier/aggregation/block_rows.h"

namespace tier::aggregation {

/// P = (I - omega D^-1 A) P_0 without dropping; `tentative` has one block a row, with column -1 where a point
/// has no aggregate. Rounded to T as it is stored.
template <class T>
void smooth_interpolation(block_rows& a, const from_zero<T>& inverse, const block_matrix<double>& tentative,
                          int aggregates, double omega, block_matrix<T>& p);

template <class T>
void index_transposed(const block_matrix<T>& p, int coarse_points, transposed_index& index);

}  // namespace tier::aggregation
