// The coarsest-level methods and what they keep between cycles. Called by cgsolve.
#pragma once

#include <memory>

#include "tier/solve/cycle_state.h"
#include "tier/solve/dense_solver.h"
#include "tier/solve/gmres_kernels.h"
#include "tier/solve/sparse_gauss.h"

namespace tier {

/// Decompositions of the coarsest level, living with the hierarchy.
struct coarse_decomposition {
  std::unique_ptr<sparse_gauss> spg;
  std::unique_ptr<dense_solver> dense;
  std::unique_ptr<krylov_block> vectors;  // of the iterative methods
  work_array<int> pinned;                 // [1..n] nonzero: u of this variable is held at 0; empty: none
  work_array<double> right;               // [1..n] right-hand side with 0 at the pinned variables
};

coarse_decomposition& coarse_factors();

/// One or two unknowns on one level: true when they have been solved. Error 900.
bool solve_trivial(cycle_state& s, level& l);

/// Factor at the first call, then substitute. Errors: 970, 960, 980.
void solve_sparse_gauss(cycle_state& s, level& l);
void solve_dense(cycle_state& s, level& l);

/// Sweeps of the smoother in groups of iter_check until the residual is below conv_stop times the first, at
/// most itmax_conv. One sweep is the nrd passes, then the nru passes; without steps four full ones.
void cl_smo(cycle_state& s, int k);

/// CG with ILU(0) (nrc 2) or the diagonal (4), BiCGstab with ILUT (3) or the diagonal (5), to the same
/// limits. Errors: 920, 930; warning -920.
void cgc0(cycle_state& s, int k);
void cgstab0(cycle_state& s, int k);

/// ILUT's fill limit on the coarsest level by lfil_cl: n as it is, 0 all, -n the average row times n / 10.
int coarse_fill_limit(const level& l);

}  // namespace tier
