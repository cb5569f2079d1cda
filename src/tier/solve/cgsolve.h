// Solution on the coarsest level, or on the only one. Called by the cycle; factors are made at the first call
// and kept until release_solution_data.
#pragma once

namespace tier {

struct cycle_state;

/// Solves A u = f on level k by the method of the options. Direct methods pin the first variable of each
/// function that iscale flags as fixed only up to a constant. Errors: 20, 900 to 990 (see ierr.h).
void cgsolve(cycle_state& s, int k);

}  // namespace tier
