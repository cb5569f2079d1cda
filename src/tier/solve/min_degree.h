// A fill-reducing elimination order for sparse Gauss elimination. Called by sparse_gauss.
#pragma once

#include "tier/store/work_arrays.h"

namespace tier {

/// Approximate minimum degree order of the pattern of A + A^T, on a quotient graph with element absorption,
/// mass elimination and indistinguishable variables: Amestoy, Davis, Duff, SIAM J. Matrix Anal. Appl. 17
/// (1996) 886-905.
/// `order` [1..n]: order[k] is the variable eliminated k-th. `below` [1..n]: below[k] bounds the entries
/// below the diagonal in column k of the factor.
void minimum_degree_order(int n, view<const int> ia, view<const int> ja, work_array<int>& order,
                          work_array<int>& below);

}  // namespace tier
