// Options of a solution.
#include "tier/codes/solve_data.h"

#include <algorithm>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/omega_jacobi.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

void check_coarsest_solver(controls& c) {
  if (c.nrc == coarsest_solver::not_served)
    fail(ierr_illegal_value, "invalid value for the coarsest grid solver (solve-data)!");
  if (c.nrc < coarsest_solver::smoothing ||
      (c.nrc > coarsest_solver::not_served && c.nrc != coarsest_solver::none))
    fail(ierr_illegal_value, "invalid value for nrc (solve-data)!");
  if (!symmetric_as_solved(c)) {  // CG needs symmetry
    if (c.nrc == coarsest_solver::ilu_cg) c.nrc = coarsest_solver::ilut_bicgstab;
    if (c.nrc == coarsest_solver::diagonal_cg) c.nrc = coarsest_solver::diagonal_bicgstab;
  }
  if (c.nrc == coarsest_solver::lapack && (parm().cldense_ctrl < 0 || parm().cldense_ctrl > 1))
    fail(ierr_illegal_value, "invalid value for cldense_ctrl (solve-data)!");
}

stopping_options stopping_of(const controls& c) {
  constexpr int any_decides = 2;
  stopping_options o;
  o.all = c.icrits[1] != any_decides;
  o.by_residual = c.icrits[2] != 0 || c.icrits[4] != 0;  // the scaled residual is the residual here
  o.by_approximations = c.icrits[3] != 0;
  o.old_residuals = c.num_old_res;
  o.old_approximations = c.num_old_apps;
  o.residual_spread = parm().factor_res_var;
  o.change = parm().factor_app_var;
  o.quasi_ratio = parm().factor_quasi_res;
  o.floor = parm().eps_abs;
  o.least_steps = parm().ncyc_min;
  o.norm = c.norm_typ;
  return o;
}

smoothing_options smoothing_of(const controls& c) {
  smoothing_options o;
  o.type = c.nxtyp;
  if (parm().nxtyp_coarse >= 0) {
    const smoother_kind coarse{parm().nxtyp_coarse};
    const bool of_single_rows = c.nsys == 1 && coarse == smoother_kind::block_gauss_seidel;
    o.on_coarse_levels = of_single_rows ? smoother_kind::gauss_seidel : coarse;
  }
  o.tells_of_coarse_levels = parm().print_nxtyp_coarse_msg;
  o.pre = decode_sweeps(c.nrd);
  o.post = decode_sweeps(c.nru);
  o.sweeps.routine = c.nstyp == approach::by_variables ? "relx_gs" : "relx_ugs";
  o.sweeps.sor_factor = parm().omega_sor_do;
  const std::vector<double>& factors = omega_jacobi_vec();
  o.sweeps.damping.all = factors.size() == 1 ? factors[0] : parm().omega_jacobi;
  if (factors.size() > 1) o.sweeps.damping.by_function = const_vector(factors.data());
  o.full_pivoting = parm().ibgs_pivot != 0;
  o.modified = parm().milu != 0;
  o.weight = parm().delta_milu;
  o.fill = parm().lfil_smo;
  o.drop = parm().droptol_smo;
  o.speed = parm().ilu_speed;
  return o;
}

coarsest_options coarsest_of(const controls& c) {
  coarsest_options o;
  o.method = c.nrc;
  o.on_finest = parm().clsolver_finest != 0;
  o.most_iterations = parm().itmax_conv;
  o.reduction = parm().conv_stop;
  o.sweeps_between_tests = std::max(1, parm().iter_check);
  o.most_restarts = parm().maxop_restart;
  o.fill = parm().lfil_cl;
  o.drop = parm().droptol_cl;
  o.stability = parm().stability;
  o.full_pivoting = parm().full_pivoting;
  return o;
}

}  // namespace

solve_options options_of_solution(const controls& c) {
  solve_options o;
  o.cycle = {c.igam, c.nstar_typ, c.ndyn_smo};
  o.smoothing = smoothing_of(c);
  o.coarsest = coarsest_of(c);
  o.acceleration = {c.ncgrad, c.ntyp_cg, c.nkdim, c.inner_accel, c.iter_pre, parm().maxop_restart};
  o.stopping = stopping_of(c);
  o.average_from = parm().ncyc_start;
  o.res_in_is_given = parm().ntake_res_in != 0;
  return o;
}

solve_options solve_data(controls& c) {
  const std::size_t factors = omega_jacobi_vec().size();
  if (factors > 1 && factors != static_cast<std::size_t>(c.nsys))
    fail(ierr_illegal_value, "size of omega_jacobi_vec is not equal to 1 or nsys (solve_data)!");
  if (parm().nbnd_omega != 0) {
    parm().nbnd_omega = 0;
    warn(warn_setting_adjusted, "TIERp parameter nbnd_omega reset to 0");
  }
  check_coarsest_solver(c);
  return options_of_solution(c);
}

}  // namespace tier
