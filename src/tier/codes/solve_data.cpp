// Checks and adaptation of the smoothing and coarsest-level choices to the system at hand.
#include "tier/solve/coarse_solvers.h"
#include "tier/solve/level_factors.h"
#include "tier/solve/tier_solve.h"
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

}  // namespace

void solve_data(const hierarchy&, controls& c) {
  const std::size_t factors = omega_jacobi_vec().size();
  if (factors > 1 && factors != static_cast<std::size_t>(c.nsys))
    fail(ierr_illegal_value, "size of omega_jacobi_vec is not equal to 1 or nsys (solve_data)!");
  if (parm().nbnd_omega != 0) {
    parm().nbnd_omega = 0;
    warn(warn_setting_adjusted, "TIERp parameter nbnd_omega reset to 0");
  }
  check_coarsest_solver(c);
}

void release_solution_data() {
  coarse_factors() = {};
  release_level_factors();
}

}  // namespace tier
