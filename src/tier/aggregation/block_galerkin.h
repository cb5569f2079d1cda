// The coarse matrix A_c = P^T A P in blocks. Called by set-up, and by re-starts with new operators.
#pragma once

#include "tier/aggregation/block_kernels.h"
#include "tier/aggregation/block_rows.h"

namespace tier::aggregation {

/// Pattern of A_c: start and column, diagonal first, and room for its values.
template <class T>
void galerkin_pattern(const block_pattern& a, const block_matrix<T>& p, const transposed_index& index,
                      int coarse_points, block_matrix<double>& coarse);

/// Values of A_c, in double, from P as it is stored. A P is formed for the rows of some coarse rows at a
/// time, so that it never stands in memory as a whole. A coarse row is formed by one thread in one order.
template <class T>
void galerkin_values(block_rows& a, const block_matrix<T>& p, const transposed_index& index,
                     block_matrix<double>& coarse);

}  // namespace tier::aggregation
