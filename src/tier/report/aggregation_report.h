// Reports and complexities of smoothed aggregation. Called by tier_main.
#pragma once

#include "tier/aggregation/block_level.h"
#include "tier/store/controls.h"
#include "tier/store/results_of_run.h"

namespace tier {

/// Complexities by the numbers that the levels store, over the caller's entries; there is no primary matrix.
complexities measure(const aggregation::aggregation_hierarchy& h, int entries);

/// Levels, and what the aggregates on them are; with idump.
void print_aggregation(const aggregation::aggregation_hierarchy& h, const controls& c);
/// "AMG solver information" with iout, and the restarts of the solution where there were any.
void print_aggregation_solver(const aggregation::aggregation_hierarchy& h, const controls& c);
void print_aggregation_restarts(const aggregation::aggregation_hierarchy& h, const controls& c);

}  // namespace tier
