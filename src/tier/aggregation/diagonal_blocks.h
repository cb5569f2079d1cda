// Inverted diagonal blocks, and the repair of diagonals that a coarse matrix lacks. Called by set-up.
#pragma once

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// inverse <- block^-1 for a symmetric block of b rows by Cholesky. A pivot that isn't above 1e-13 of its
/// diagonal entry makes its row an unknown of its own with the mean diagonal; returns whether none was so.
bool invert_block(int b, const double* block, double* inverse);

/// Rows of a coarse block that vanish, since a near-null vector is dependent on an aggregate: a diagonal
/// entry that isn't above 1e-13 of the trace becomes the mean one, the rest of its row and column stays zero.
void complete_diagonal(int b, double* block);

}  // namespace tier::aggregation
