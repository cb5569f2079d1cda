// The caller's damping factors of Jacobi steps. Set by TIER_OMEGA_JACOBI_SET,
// read by solve_data and smoothers.
#pragma once

#include <vector>

#include "tier/store/context.h"

namespace tier {

extern const per_context<std::vector<double>>
    omega_jacobi_vec;  // empty: omega_jacobi holds; else 1 or nsys factors

}  // namespace tier
