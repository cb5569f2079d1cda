// The Krylov accelerators on level 1. tier_solve chooses one; each runs until a stopping rule or a
// limit ends it, leaves the solution in u and the residual norm in res_out.
#pragma once

#include <string_view>

#include "tier/solve/stopping.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

struct cycle_state;

struct acceleration_options {
  accelerator method = accelerator::cg;        // ncgrad
  cg_ratio ratio = cg_ratio::fletcher_reeves;  // of conjugate gradients (ntyp_accel)
  int dimension = 30;     // most kept columns of GMRES, directions of flexible CG (nkdim)
  int inner_cycles = 1;   // in one application as preconditioner, 1..9 (inner_accel)
  int cycles_before = 0;  // stand-alone ones (iter_pre)
  int most_restarts = 2;  // after breakdowns (maxop_restart)
};

/// What an accelerator works on.
struct accelerated_run {
  cycle_state& s;
  run_results& results;
  stopping_rules& rules;
  view<double> by_function;  // [1..nsys] norms by function, empty unless show_un_res

  level& fine();
};

/// Flexible GMRES with restarts, right preconditioning, modified Gram-Schmidt: Saad, SIAM J. Sci. Comput. 14
/// (1993) 461-469. Warnings -851, -852; errors 850, 210, 211.
void gmres(accelerated_run& run);

/// BiCGstab with two preconditioned steps an iteration: van der Vorst, SIAM J. Sci. Stat. Comput. 13 (1992)
/// 631-644. Warnings -841, -842, -843; errors 840, 210, 211.
void cgstab(accelerated_run& run);

/// Conjugate gradients: old_cgc with the ratio of Fletcher and Reeves, new_cgc with that of Polak and
/// Ribiere. Warnings -830, -831, -832; errors 830, 210, 211.
void old_cgc(accelerated_run& run);
void new_cgc(accelerated_run& run);

/// Conjugate gradients with up to `dimension` kept directions, each made A-orthogonal to the kept ones:
/// Notay, SIAM J. Sci. Comput. 22 (2000) 1444-1460. Numbers as for new_cgc.
void flexcg_skcycle(accelerated_run& run);

/// z <- M^-1 v: inner_cycles cycles from zero, or the diagonal, or an incomplete factorisation of level 1.
void precondition(accelerated_run& run, view<double> v, view<double> z, std::string_view reason);

/// Residual norm of level 1's u, the residual itself in r; with show_un_res also by function.
double real_residual(accelerated_run& run, view<double> r);

/// Ends a step of the accelerator: counts it, prints its line, calls the hook and stores its norm.
void end_step(accelerated_run& run, double res, double& previous);

}  // namespace tier
