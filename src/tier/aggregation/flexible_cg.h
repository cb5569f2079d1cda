// Conjugate gradients on the caller's system with the cycle over aggregates as preconditioner.
// Called by the solution phase.
#pragma once

#include "tier/aggregation/block_level.h"
#include "tier/solve/accelerators.h"

namespace tier::aggregation {

/// Flexible conjugate gradients with the ratio of Polak and Ribiere, in double with the caller's matrix:
/// Notay, SIAM J. Sci. Comput. 22 (2000) 1444-1460. A preconditioner that isn't positive, (z, r) <= 0 or no
/// finite number, widens the eigenvalue bounds of all levels by 1.5 and restarts from the present residual,
/// at most ten times a solution; `restarts` of the hierarchy counts that. Warnings -830, -831, -832; error
/// 830, where the matrix isn't positive or restarts don't help.
void flexible_cg(accelerated_run& run, aggregation_hierarchy& h);

}  // namespace tier::aggregation
