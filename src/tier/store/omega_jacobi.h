// The caller's damping factors of Jacobi steps. Set by TIER_OMEGA_JACOBI_SET, read by solve_data and
// smoothers.
#pragma once

#include <vector>

namespace tier {

extern std::vector<double> omega_jacobi_vec;  // empty: omega_jacobi holds; else 1 or nsys factors

}  // namespace tier
