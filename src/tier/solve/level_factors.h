// Decompositions kept per level: ILU factors, shared by smoothers and coarsest-level solvers, and block ILU.
// Made on demand, kept until release_solution_data.
#pragma once

#include <memory>

#include "tier/solve/block_ilu.h"
#include "tier/solve/ilu.h"

namespace tier {

enum class ilu_user { smoother, coarsest_solver };

/// The factors of level k with these options, made anew where they are missing or differ; null: failed.
/// Factors that fit are shared; each user replaces its own alone.
ilu_factors* ilu_of_level(const level& l, int k, const ilu_options& options,
                          ilu_user user = ilu_user::smoother);

/// The same for block ILU(0) by points.
block_ilu* block_ilu_of_level(const level& l, int k, bool modified, double weight);

/// Point structure of level k.
point_blocks& points_of_level(const level& l, int k);

void release_level_factors();

}  // namespace tier
