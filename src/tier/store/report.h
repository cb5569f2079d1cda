// Residual tables of the solution phase and the per-cycle hook of the caller.
// Called by tier_solve, cyc and the accelerators.
#pragma once

#include <string_view>

#include "tier/store/controls.h"
#include "tier/store/work_arrays.h"

namespace tier {

/// "L2", "L1" or "MX".
std::string_view norm_tag(norm_kind norm);

/// Head of the residual table; this and the lines below print at an iout level of 2 or more.
void print_residual_head(const controls& c);

/// One line per cycle: its number, the residual norm and its factor over `previous` (negative: no factor).
/// by_function [1..nsys], where given, adds a line per function up to show_un_res.
void print_residual_line(const controls& c, int cycle, double residual, double previous,
                         view<const double> by_function = {});

/// At an iout level of 3 or more, a line within a cycle: the grid, its residual and what was done on it
/// ("resc", "solv", "inta").
void print_process_line(const controls& c, int grid, double residual, std::string_view process);

/// Hands the residual after `cycle` cycles to the caller's TIER_CURRENT_RESIDUAL.
void current_residual(int cycle, double residual);

}  // namespace tier
