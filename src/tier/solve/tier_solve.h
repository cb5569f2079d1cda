// The solution phase: first residual, stand-alone cycles, accelerator, final residual. Called by tier_main.
#pragma once

#include <functional>

#include "tier/solve/solve_options.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// An accelerator with a preconditioner of its own, in place of the cycles and of the choice by the options.
using own_accelerator = std::function<void(accelerated_run&)>;

/// Solves on level 1's u; warnings go through warn(), faults through fail().
void tier_solve(hierarchy& h, const controls& c, const solve_options& o, run_results& r,
                const own_accelerator& own = nullptr);

/// Frees decompositions that live with the hierarchy (coarsest-level factors, ILU smoothers). To be called
/// wherever level matrices change or go: they are made anew only where none are kept.
void release_solution_data();

}  // namespace tier
