// Norms of the couplings between points, by which they are strong or weak. Called by set-up once per level.
#pragma once

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// Which norm of a block A_ij tells how strong a coupling is.
enum class strength_measure : int {
  entries = 1,  // Frobenius norm of A_ij
  energy = 2  // Frobenius norm of D_i^-1/2 A_ij D_j^-1/2, which has no units: for variables of several kinds
};

/// Norm of every block. inverse holds the inverted diagonal blocks; the energy of a diagonal block is that of
/// the identity.
template <class T>
void coupling_norms(const block_matrix<T>& a, const from_zero<T>& inverse, strength_measure measure,
                    from_zero<float>& norm);

}  // namespace tier::aggregation
