// The methods of the solution phase in words. Called by tier_main before cycling.
#pragma once

#include "tier/frame/controls.h"
#include "tier/frame/hierarchy.h"

namespace tier {

/// At an iout level of 1 or more: basic method, smoothing, acceleration and coarsest-level solution, as
/// solve_data left them.
void print_solver_information(const hierarchy& h, const controls& c);

}  // namespace tier
