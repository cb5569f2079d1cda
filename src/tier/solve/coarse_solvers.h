// The coarsest-level methods and what they keep between cycles. Called by cgsolve.
#pragma once

#include <memory>

#include "tier/solve/dense_solver.h"
#include "tier/solve/gmres_kernels.h"
#include "tier/solve/sparse_gauss.h"
#include "tier/store/choices.h"

namespace tier {

struct cycle_state;

struct coarsest_options {
  coarsest_solver method = coarsest_solver::sparse_gauss;  // nrc
  bool on_finest = false;  // with one level: in place of smoothing (clsolver_finest)
  // iterative methods
  int most_iterations = 200;     // itmax_conv
  double reduction = 0.01;       // of the residual, that ends them (conv_stop)
  int sweeps_between_tests = 3;  // of smoothing, at least 1 (iter_check)
  int most_restarts = 2;         // maxop_restart
  int fill = -10;                // of ILUT, see coarse_fill_limit (lfil_cl)
  double drop = 0.005;           // relative size of what ILUT drops (droptol_cl)
  // direct methods
  double stability = 0.25;     // pivot threshold of sparse Gauss elimination
  bool full_pivoting = false;  // of dense Gauss elimination
};

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

/// Sweeps of the smoother in groups of sweeps_between_tests until the residual is below `reduction` times the
/// first, most_iterations at most. One sweep is the pre-smoothing, then the post-smoothing; without steps
/// four full ones.
void cl_smo(cycle_state& s, int k);

/// CG with ILU(0) or the diagonal, BiCGstab with ILUT or the diagonal, to the same
/// limits. Errors: 920, 930; warning -920.
void cgc0(cycle_state& s, int k);
void cgstab0(cycle_state& s, int k);

/// ILUT's fill limit on the coarsest level by `fill`: n as it is, 0 all, -n the average row times n / 10.
int coarse_fill_limit(const level& l, int fill);

}  // namespace tier
