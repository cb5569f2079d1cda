// Gauss-Seidel and Jacobi steps on one level. Called by the smoother.
#pragma once

#include <span>

#include "tier/solve/sweep_rows.h"
#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Damping factors of the Jacobi step: one for all rows, or one per function.
struct jacobi_damping {
  double all = 0.5;
  const_vector by_function;  // [1..nsys], empty: `all`
};

struct sweep_options {
  double sor_factor = 0.0;          // of ascending steps over all rows, 0: none (omega_sor_do)
  jacobi_damping damping;           // omega_jacobi, or the caller's own factors
  const char* routine = "relx_gs";  // that faults name: relx_gs or relx_ugs
};

/// Steps on the rows of a level, in place: u_i <- (f_i - sum_{j/=i} a_ij u_j) / a_ii on the selected rows.
/// rows     of the level
/// steps    1 F rows, 2 all, 3 C rows ascending; 4 to 6 the same descending; 7 damped Jacobi on all rows;
///          a negative step runs in the other direction. Without states all rows are taken.
/// scratch  threads * n numbers. A thread smooths its rows in a copy of u there, with those of other threads
///          as they were when the step began, so that timing never shows in the result.
/// Errors: 20 for an unknown step.
void relx_gs(const level& l, const sweep_rows& rows, const_vector f, vector u, std::span<const int> steps,
             const sweep_options& o, vector scratch);

}  // namespace tier
