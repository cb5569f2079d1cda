// The digits of nsolve and what they need of the system.
#include "tier/codes/approach_code.h"

#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

void read_smoother(controls& c, int nxtyp) {
  constexpr int unused = 4, unused_too = 7, f_relaxation = 8, uzawa = 9;
  require_legal(nxtyp != unused && nxtyp != unused_too, "nxtyp");
  if (nxtyp == f_relaxation || nxtyp == uzawa) not_released("nxtyp=" + std::to_string(nxtyp));
  c.nxtyp = smoother_kind{nxtyp};
  const bool by_blocks = c.nxtyp == smoother_kind::block_gauss_seidel || c.nxtyp == smoother_kind::block_ilu0;
  if (by_blocks && c.nsys == 1)  // blocks of one variable
    c.nxtyp = c.nxtyp == smoother_kind::block_ilu0 ? smoother_kind::ilu0 : smoother_kind::gauss_seidel;
  else
    require_consistent(!by_blocks || c.has_ip, "nxtyp");
}

/// What the other digits of nsolve say about points goes with them: an unknown-based run refuses it.
void fall_back_to_unknowns(controls& c) {
  c.nstyp = approach::by_unknowns;
  c.internal = primary_matrix::of_primary_unknown;
  c.nprim = 0;
  c.dummy_primary = false;
  c.nint_weights = weight_source::entries;
  c.nint_pat = weight_pattern::of_matrix;
}

void choose_approach(controls& c, int napproach) {
  constexpr int variable_based = code_of(approach::by_variables);
  if (napproach <= variable_based) {
    c.nstyp = approach::by_variables;
    if (c.nsys > 1 && napproach == variable_based)
      warn(warn_approach_changed,
           "The coupled system is solved as if it were scalar (variable-based approach).");
    return;
  }
  if (napproach == code_of(approach::by_unknowns)) {
    c.nstyp = c.nsys == 1 ? approach::by_variables : approach::by_unknowns;
    return;
  }
  if (!c.has_ip && c.nsys > 1) {
    info(message_class::warning, "You have requested a point-based solution approach.");
    info(message_class::warning, "However, vector <ip> is not defined / cannot be defined but nsys>1.");
    warn(warn_approach_changed, "Using the unknown-based approach instead!");
    fall_back_to_unknowns(c);
    return;
  }
  c.nstyp = approach::by_points;
  c.nint_force = point_interpolation{napproach - code_of(approach::by_unknowns)};
}

}  // namespace

int approach_or_default(int nsolve) { return nsolve == 0 ? parm().nsolve_default : nsolve; }

void read_approach(controls& c, const call_arguments& call) {
  if (c.nsys > 1 && call.ndiu < c.nnu) fail(ierr_bad_matrix, "Array <iu> not properly declared!");
  c.has_ip = call.ndip >= c.nnu && call.ndip > 1;

  const auto d = digits_of<9>(approach_or_default(call.nsolve));
  require_legal(d[1] <= 5, "napproach");
  require_legal(d[3] <= code_of(primary_matrix::second_test), "internal>6");
  c.internal = primary_matrix{d[3]};
  c.nprim = 10 * d[4] + d[5];
  require_legal(c.nprim <= c.nsys, "nprim");
  c.dummy_primary = c.nprim != 0 && d[6] != 0;
  require_legal(d[7] <= code_of(weight_source::spectral_norm), "nint_weights>5");
  require_legal(d[8] <= code_of(weight_pattern::of_primary_matrix), "nint_pat>2");
  if (d[7] != 0) c.nint_weights = weight_source{d[7]};
  if (d[8] != 0) c.nint_pat = weight_pattern{d[8]};
  read_smoother(c, d[2]);
  choose_approach(c, d[1]);
  if (c.nsys == 1 && norm_based(c))
    fail(ierr_inconsistent_input, "Norm-based approach not meaningful in scalar case!");
}

}  // namespace tier
