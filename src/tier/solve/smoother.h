// One entry for every relaxation on every level. Called by the cycle, the one-level path and cl_smo.
#pragma once

#include <optional>

#include "tier/solve/ilu.h"
#include "tier/solve/relax.h"
#include "tier/solve/sweep_code.h"
#include "tier/store/choices.h"

namespace tier {

struct cycle_state;

struct smoothing_options {
  smoother_kind type = smoother_kind::gauss_seidel;  // nxtyp
  // in place of the Gauss-Seidel kinds below level 1 (nxtyp_coarse); a note may tell of it
  std::optional<smoother_kind> on_coarse_levels;
  bool tells_of_coarse_levels = false;
  sweep_code pre, post;        // on the way down and up (nrd, nru)
  sweep_options sweeps;        // of Gauss-Seidel and Jacobi
  bool full_pivoting = false;  // in the systems of points, else by rows (ibgs_pivot)
  // incomplete factors
  bool modified = false;  // what is dropped goes to the diagonal ... (milu)
  double weight = 1.0;    // ... times this (delta_milu)
  int fill = 9;           // entries of a row of ILUT (lfil_smo)
  double drop = 0.005;    // relative size of what ILUT drops (droptol_smo)
  int speed = 1;          // kind of ILU kernels: there is one, a change makes the factors anew (ilu_speed)
};

/// Options of the decomposition for one of the ILU smoothers.
ilu_options ilu_options_of(const smoothing_options& o, smoother_kind type);

/// All passes of `code` on level k, by the smoother type nxtyp; ILU types make one sweep per pass.
/// Errors: 20 for an unknown step or type, 220 for a singular block.
void smoother(cycle_state& s, int k, const sweep_code& code);

/// Makes what the smoothers of all levels need: rows by state and by thread, decompositions, point
/// structures. Errors: 50 without ip, 200, 230, 240.
void prepare_smoothers(cycle_state& s);

/// Smoother type that level k uses: its own below level 1 where there is one.
smoother_kind smoother_type(const smoothing_options& o, int k);

}  // namespace tier
