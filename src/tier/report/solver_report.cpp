// "AMG solver information".
#include "tier/report/solver_report.h"

#include <array>
#include <cstdlib>
#include <string>

#include "tier/solve/coarse_solvers.h"
#include "tier/solve/sweep_code.h"
#include "tier/store/formatted.h"
#include "tier/store/parameters.h"
#include "tier/store/print_line.h"

namespace tier {

namespace {

constexpr int jacobi_step = 7, no_coarse_solution = 99;

std::string milu_weight() { return formatted("MILU(0,%g)", parm().delta_milu); }

void print_sweeps(const char* side, int code) {
  const sweep_code sweeps = decode_sweeps(code);
  int jacobi = 0, gauss_seidel = 0;
  bool parts = false;
  for (std::size_t i = 0; i < static_cast<std::size_t>(sweeps.steps); ++i) {
    const int step = std::abs(sweeps.step[i]);
    ++(step == jacobi_step ? jacobi : gauss_seidel);
    parts |= step == 1 || step == 3;
  }
  print_line("%s-smoothing consists of %d Jacobi and %d Gauss-Seidel sweeps%s", side, sweeps.passes * jacobi,
             sweeps.passes * gauss_seidel, parts ? " (including CF)" : "");
}

void print_basic_method(const hierarchy& h, const controls& c) {
  constexpr std::array<const char*, 5> cycles{"", "V", "F", "W", "VV"};
  constexpr int last_cycle = 4, diagonal = 5, cg = 1, flexible_cg = 4;
  if (c.igam > last_cycle) {
    const char* method = c.igam == diagonal                          ? "Diagonal scaling (Jacobi)"
                         : c.ncgrad == 0                             ? "Gauss-Seidel"
                         : c.ncgrad == cg || c.ncgrad == flexible_cg ? "IC(0)"
                                                                     : "ILUT";
    print_line("Basic Method: One-level method (igam=%d) - %s", c.igam, method);
  } else if (h.levels_used > 1) {
    print_line("Basic Method: AMG on %d levels (%s-cycle)", h.levels_used,
               cycles[static_cast<std::size_t>(c.igam)]);
  } else if (c.nrc == no_coarse_solution) {
    print_line("Basic Method: Smoothing only - nxtyp=%d on one level", c.nxtyp);
  } else {
    message("Basic Method: One-level method - smoothing and coarsest-level solver");
  }
}

void print_acceleration(const controls& c) {
  constexpr int cg = 1, bicgstab = 2;
  if (c.ncgrad == 0) return message("Acceleration: None");
  const char* name = c.ncgrad == cg ? c.ntyp_cg == 1 ? "old Conjugate Gradient" : "new Conjugate Gradient"
                     : c.ncgrad == bicgstab ? "BI-CGSTAB"
                     : c.ncgrad == 3        ? "Flexible GMRES"
                                            : "Flexible CG";
  if (c.ncgrad <= bicgstab)
    print_line("Acceleration: %s[%d] (Restart - %d) with %d pre-steps", name, c.inner_accel,
               parm().maxop_restart, c.iter_pre);
  else
    print_line("Acceleration: %s[%d] (Krylov dim=%d) with %d pre-steps", name, c.inner_accel, c.nkdim,
               c.iter_pre);
}

}  // namespace

void print_smoother(const controls& c) {
  switch (c.nxtyp) {
    case 0:
      message(c.nstyp == 1 ? "Smoothing:  Gauss-Seidel, variable-wise"
                           : "Smoothing:  Gauss-Seidel, unknown-wise");
      break;
    case 1:
      message("Smoothing:  " + (parm().milu != 0 ? milu_weight() : "ILU(0)"));
      break;
    case 2:
      print_line("Smoothing:  ILUT(%d,%g)", parm().lfil_smo, parm().droptol_smo);
      break;
    case 3:
      print_line("Smoothing:  %s(%d,%g)", parm().milu != 0 ? "MILUTP" : "ILUTP", parm().lfil_smo,
                 parm().droptol_smo);
      break;
    case 5:
      print_line("Smoothing:  Gauss-Seidel, block-wise, pivoting(%d)", parm().ibgs_pivot);
      break;
    case 6:
      message("Smoothing:  Block-" + (parm().milu != 0 ? milu_weight() : "ILU(0)"));
      break;
    default:
      break;
  }
}

void print_coarsest_choice(const controls& c, const level* coarsest) {
  if (c.nrc == no_coarse_solution) return message("Coarse level: no solution");
  if (c.nrc <= 5)
    print_line("Coarse level: Iterative solution (max:%d, stop: %g) by", parm().itmax_conv, parm().conv_stop);
  else if (c.nrc != 9)
    message("Coarse level: Direct solution by");
  switch (c.nrc) {
    case 1:
      print_line("              Plain smoothing steps  (iter_check =%d)", parm().iter_check);
      break;
    case 2:
      message("              " + (parm().milu != 0 ? milu_weight() : "ILU(0)") + " preconditioned CG");
      break;
    case 3:
      print_line("              ILUT(%d,%g) preconditioned BI-CGSTAB",
                 coarsest ? coarse_fill_limit(*coarsest) : parm().lfil_cl, parm().droptol_cl);
      break;
    case 4:
      message("              Diagonally preconditioned CG");
      break;
    case 5:
      message("              Diagonally preconditioned BI-CGSTAB");
      break;
    case 6:
      print_line("              Full Gauss elimination (%s pivoting)",
                 parm().full_pivoting ? "full" : "partial");
      break;
    case 7:
      message("              Sparse Gauss elimination");
      break;
    case 8:
      message("              Least squares");
      break;
    case 9:
      message("Coarse level: User provided solution process");
      break;
    case 10:
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
  if (c.igam <= 4) {
    print_smoother(c);
    print_sweeps("Pre", c.nrd);
    print_sweeps("Post", c.nru);
  }
  print_acceleration(c);
  if (c.igam > 4) return;
  if (c.nrc != no_coarse_solution) print_line("Coarse level: size = %d", h(h.levels_used).n);
  print_coarsest_choice(c, &h(h.levels_used));
}

}  // namespace tier
