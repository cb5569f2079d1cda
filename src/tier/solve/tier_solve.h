// The solution phase: first residual, stand-alone cycles, accelerator, final residual. Called by tier_main.
#pragma once

#include <functional>

#include "tier/solve/accelerators.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// An accelerator with a preconditioner of its own, in place of the cycles and of the choice by ncgrad.
using own_accelerator = std::function<void(accelerated_run&)>;

/// Decodes the smoothing codes nrd, nru and the coarsest-level choice nrc, and adapts them to the hierarchy.
void solve_data(const hierarchy& h, controls& c);

/// Solves on level 1's u; warnings go through warn(), faults through fail().
void tier_solve(hierarchy& h, controls& c, run_results& r, const own_accelerator& own = nullptr);

/// Frees decompositions that live with the hierarchy (coarsest-level factors, ILU smoothers). To be called
/// wherever level matrices change or go: they are made anew only where none are kept.
void release_solution_data();

}  // namespace tier
