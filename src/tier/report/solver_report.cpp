// "AMG solver information".
#include "tier/report/solver_report.h"

#include <cstdlib>
#include <string>

#include "tier/solve/coarse_solvers.h"
#include "tier/solve/sweep_code.h"
#include "tier/store/formatted.h"
#include "tier/store/numbered.h"
#include "tier/store/parameters.h"
#include "tier/store/print_line.h"

namespace tier {

namespace {

std::string milu_weight() { return formatted("MILU(0,%g)", parm().delta_milu); }

void print_sweeps(const char* side, int code) {
  const sweep_code sweeps = decode_sweeps(code);
  int jacobi = 0, gauss_seidel = 0;
  bool parts = false;
  for (int i = 0; i < sweeps.steps; ++i) {
    const int step = std::abs(sweeps.step[i]);
    ++(step == jacobi_step ? jacobi : gauss_seidel);
    parts |= step == 1 || step == 3;
  }
  print_line("%s-smoothing consists of %d Jacobi and %d Gauss-Seidel sweeps%s", side, sweeps.passes * jacobi,
             sweeps.passes * gauss_seidel, parts ? " (including CF)" : "");
}

void print_basic_method(const hierarchy& h, const controls& c) {
  constexpr numbered<const char*, 5> cycles{"", "V", "F", "W", "VV"};
  if (is_one_level(c.igam)) {
    const char* method = c.igam == cycle_kind::diagonal  ? "Diagonal scaling (Jacobi)"
                         : c.ncgrad == accelerator::none ? "Gauss-Seidel"
                         : needs_symmetry(c.ncgrad)      ? "IC(0)"
                                                         : "ILUT";
    print_line("Basic Method: One-level method (igam=%d) - %s", code_of(c.igam), method);
  } else if (h.levels_used > 1) {
    print_line("Basic Method: AMG on %d levels (%s-cycle)", h.levels_used, cycles[code_of(c.igam)]);
  } else if (c.nrc == coarsest_solver::none) {
    print_line("Basic Method: Smoothing only - nxtyp=%d on one level", code_of(c.nxtyp));
  } else {
    message("Basic Method: One-level method - smoothing and coarsest-level solver");
  }
}

void print_acceleration(const controls& c) {
  if (c.ncgrad == accelerator::none) return message("Acceleration: None");
  const char* cg =
      c.ntyp_cg == cg_ratio::fletcher_reeves ? "old Conjugate Gradient" : "new Conjugate Gradient";
  const char* name = c.ncgrad == accelerator::cg         ? cg
                     : c.ncgrad == accelerator::bicgstab ? "BI-CGSTAB"
                     : c.ncgrad == accelerator::gmres    ? "Flexible GMRES"
                                                         : "Flexible CG";
  const bool restarts = c.ncgrad == accelerator::cg || c.ncgrad == accelerator::bicgstab;
  if (restarts)
    print_line("Acceleration: %s[%d] (Restart - %d) with %d pre-steps", name, c.inner_accel,
               parm().maxop_restart, c.iter_pre);
  else
    print_line("Acceleration: %s[%d] (Krylov dim=%d) with %d pre-steps", name, c.inner_accel, c.nkdim,
               c.iter_pre);
}

}  // namespace

void print_smoother(const controls& c) {
  switch (c.nxtyp) {
    case smoother_kind::gauss_seidel:
      message(c.nstyp == approach::by_variables ? "Smoothing:  Gauss-Seidel, variable-wise"
                                                : "Smoothing:  Gauss-Seidel, unknown-wise");
      break;
    case smoother_kind::ilu0:
      message("Smoothing:  " + (parm().milu != 0 ? milu_weight() : "ILU(0)"));
      break;
    case smoother_kind::ilut:
      print_line("Smoothing:  ILUT(%d,%g)", parm().lfil_smo, parm().droptol_smo);
      break;
    case smoother_kind::ilutp:
      print_line("Smoothing:  %s(%d,%g)", parm().milu != 0 ? "MILUTP" : "ILUTP", parm().lfil_smo,
                 parm().droptol_smo);
      break;
    case smoother_kind::block_gauss_seidel:
      print_line("Smoothing:  Gauss-Seidel, block-wise, pivoting(%d)", parm().ibgs_pivot);
      break;
    case smoother_kind::block_ilu0:
      message("Smoothing:  Block-" + (parm().milu != 0 ? milu_weight() : "ILU(0)"));
      break;
  }
}

void print_coarsest_choice(const controls& c, const level* coarsest) {
  if (c.nrc == coarsest_solver::none) return message("Coarse level: no solution");
  if (is_iterative(c.nrc))
    print_line("Coarse level: Iterative solution (max:%d, stop: %g) by", parm().itmax_conv, parm().conv_stop);
  else if (c.nrc != coarsest_solver::of_user)
    message("Coarse level: Direct solution by");
  switch (c.nrc) {
    case coarsest_solver::smoothing:
      print_line("              Plain smoothing steps  (iter_check =%d)", parm().iter_check);
      break;
    case coarsest_solver::ilu_cg:
      message("              " + (parm().milu != 0 ? milu_weight() : "ILU(0)") + " preconditioned CG");
      break;
    case coarsest_solver::ilut_bicgstab:
      print_line("              ILUT(%d,%g) preconditioned BI-CGSTAB",
                 coarsest ? coarse_fill_limit(*coarsest, parm().lfil_cl) : parm().lfil_cl, parm().droptol_cl);
      break;
    case coarsest_solver::diagonal_cg:
      message("              Diagonally preconditioned CG");
      break;
    case coarsest_solver::diagonal_bicgstab:
      message("              Diagonally preconditioned BI-CGSTAB");
      break;
    case coarsest_solver::full_gauss:
      print_line("              Full Gauss elimination (%s pivoting)",
                 parm().full_pivoting ? "full" : "partial");
      break;
    case coarsest_solver::sparse_gauss:
      message("              Sparse Gauss elimination");
      break;
    case coarsest_solver::least_squares:
      message("              Least squares");
      break;
    case coarsest_solver::of_user:
      message("Coarse level: User provided solution process");
      break;
    case coarsest_solver::lapack:
      message("              Full Gauss elimination (LAPACK)");
      break;
    default:
      break;
  }
}

void print_solver_information(const hierarchy& h, const controls& c) {
  if (c.out_level < 1) return;
  message("AMG solver information", 1);
  print_basic_method(h, c);
  if (!is_one_level(c.igam)) {
    print_smoother(c);
    print_sweeps("Pre", c.nrd);
    print_sweeps("Post", c.nru);
  }
  print_acceleration(c);
  if (is_one_level(c.igam)) return;
  if (c.nrc != coarsest_solver::none) print_line("Coarse level: size = %d", h(h.levels_used).n);
  print_coarsest_choice(c, &h(h.levels_used));
}

}  // namespace tier
