// The tentative interpolation: an orthonormal basis of the near-null vectors on every aggregate.
// Called by set-up once per level.
#pragma once

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// Near-null vectors of a level by points: b x m blocks, each by columns, one block a point.
using near_null = from_zero<double>;

/// N_a = Q_a R_a for the rows of every aggregate by modified Gram-Schmidt, twice. Q takes the place of N in
/// `vectors`, 0 for points without aggregate; R, m x m by columns, becomes the coarse level's block. A column
/// that keeps less than 1e-12 of its squared norm is dependent: it gets 0 in Q and on R's diagonal.
/// Vanek, Brezina, Mandel, Numer. Math. 88 (2001) 559-579.
void factor_by_aggregate(int n, int b, int m, const from_zero<int>& aggregate, int aggregates,
                         near_null& vectors, near_null& coarse);

}  // namespace tier::aggregation
