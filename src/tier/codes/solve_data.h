// The door of a solution: its codes and parameters become the options of the algorithms.
// Called by the steps of a call before each solution.
#pragma once

#include "tier/solve/solve_options.h"
#include "tier/store/controls.h"

namespace tier {

/// The options as the checked codes of the call and the parameters have them at this moment.
solve_options options_of_solution(const controls& c);

/// Checks what the solution by levels alone needs, adapts the coarsest-level solver to a matrix that isn't
/// symmetric, and gives the options. Errors: 20; warning -50 where a parameter is reset.
solve_options solve_data(controls& c);

}  // namespace tier
