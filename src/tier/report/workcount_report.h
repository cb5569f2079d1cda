// What a solution cost and reached. Called by tier_main after the solution.
#pragma once

#include "tier/store/controls.h"

namespace tier {

/// At an iout level of 0 or more the counters and residuals,
/// at 1 or more the average reduction, times and memory.
void print_workcount(const controls& c, const run_results& r);

/// Residuals of the system before its modification by modify_mat.
void print_restored_residuals(const controls& c, double res_in, double res_out);

}  // namespace tier
