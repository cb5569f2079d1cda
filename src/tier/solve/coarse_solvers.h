// The coarsest-level methods and what they keep between cycles. Called by cgsolve.
#pragma once

#include <memory>

#include "tier/solve/cycle_state.h"
#include "tier/solve/dense_solver.h"
#include "tier/solve/sparse_gauss.h"

namespace tier {

/// Decompositions of the coarsest level, living with the hierarchy.
struct coarse_decomposition {
  std::unique_ptr<sparse_gauss> spg;
  std::unique_ptr<dense_solver> dense;
  work_array<int> pinned;    // [1..n] nonzero: u of this variable is held at 0; empty: none
  work_array<double> right;  // [1..n] right-hand side with 0 at the pinned variables
};

coarse_decomposition& coarse_factors();

/// One or two unknowns on one level: true when they have been solved. Error 900.
bool solve_trivial(cycle_state& s, level& l);

/// Factor at the first call, then substitute. Errors: 970, 960, 980.
void solve_sparse_gauss(cycle_state& s, level& l);
void solve_dense(cycle_state& s, level& l);

}  // namespace tier
