// The one-level methods (Jacobi, and incomplete factors), as preconditioners and on their own.
// Called by the accelerators and the driver.
#pragma once

#include "tier/solve/cycle_state.h"

namespace tier {

/// Makes the factors that incomplete factorisation needs: ILU(0) for the CG kinds, ILUT for the others.
/// Errors: 810 (CG), 820 (GMRES, BiCGstab).
void prepare_one_level(cycle_state& s);

/// z <- D^-1 v (igam 5) or (L U)^-1 v (igam 6).
void one_level_precondition(cycle_state& s, view<const double> v, view<double> z);

/// ncycle sweeps without an accelerator: Jacobi (igam 5), Gauss-Seidel over all rows (igam 6).
void one_level_sweeps(cycle_state& s, int sweeps);

}  // namespace tier
