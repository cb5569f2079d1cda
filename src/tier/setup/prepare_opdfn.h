// Lays out the next level: numbers the coarse variables, hands on their functions and points, rewrites the
// interpolation to coarse numbers and transposes it. Called by create_levels before the Galerkin product.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

/// C-variables of `fine` in ascending order become variables 1, 2, ... of `coarse`; icg and jw of `fine` then
/// hold coarse numbers. Sets n, iu, ip, npnts and iv of `coarse` and the transposed interpolation of `fine`.
void prepare_opdfn(level& fine, level& coarse);

/// rt, jrt, wrt of `fine`: for each coarse variable the fine ones that it interpolates to, ascending.
void transpose_weights(level& fine, int coarse_variables);

/// iv from ip: first variable of each point; points are consecutive.
void set_points(level& lv);

}  // namespace tier
