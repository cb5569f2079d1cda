// The Krylov accelerators on level 1. tier_solve dispatches on ncgrad; each runs until a stopping rule or a
// limit ends it, leaves the solution in u and the residual norm in res_out.
#pragma once

#include <string_view>

#include "tier/solve/cycle_state.h"
#include "tier/solve/stopping.h"

namespace tier {

/// What an accelerator works on.
struct accelerated_run {
  cycle_state& s;
  run_results& results;
  stopping_rules& rules;
  view<double> by_function;  // [1..nsys] norms by function, empty unless show_un_res

  level& fine() { return s.at(1); }
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

/// Conjugate gradients with up to nkdim kept directions, each made A-orthogonal to the kept ones: Notay, SIAM
/// J. Sci. Comput. 22 (2000) 1444-1460. Numbers as for new_cgc.
void flexcg_skcycle(accelerated_run& run);

/// z <- M^-1 v: inner_accel cycles from zero, or with igam 5 the diagonal,
/// with igam 6 an incomplete factorisation.
void precondition(accelerated_run& run, view<double> v, view<double> z, std::string_view reason);

/// Residual norm of level 1's u, the residual itself in r; with show_un_res also by function.
double real_residual(accelerated_run& run, view<double> r);

/// Ends a step of the accelerator: counts it, prints its line, calls the hook and stores its norm.
void end_step(accelerated_run& run, double res, double& previous);

}  // namespace tier
