// The methods of the solution phase in words. Called by tier_main before cycling, and by the set-up report.
#pragma once

#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// At an iout level of 1 or more: basic method, smoothing, acceleration and coarsest-level solution, as
/// solve_data left them.
void print_solver_information(const hierarchy& h, const controls& c);

/// The lines of the smoother and of the method on the coarsest level, whatever the print level. Before the
/// set-up has made the coarsest level, its fill limit is the parameter as it stands.
void print_smoother(const controls& c);
void print_coarsest_choice(const controls& c, const level* coarsest = nullptr);

}  // namespace tier
