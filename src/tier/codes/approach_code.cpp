// The digits of nsolve and what they need of the system.
#include "tier/codes/approach_code.h"

#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr int variable_based = 1, unknown_based = 2, point_based = 3;

void read_smoother(controls& c, int nxtyp) {
  require_legal(nxtyp != 4 && nxtyp != 7, "nxtyp");
  if (nxtyp == 8 || nxtyp == 9) not_released("nxtyp=" + std::to_string(nxtyp));
  if (c.nsys == 1 && nxtyp == 5) nxtyp = 0;  // blocks of one variable
  if (c.nsys == 1 && nxtyp == 6) nxtyp = 1;
  require_consistent((nxtyp != 5 && nxtyp != 6) || c.has_ip, "nxtyp");
  c.nxtyp = nxtyp;
}

/// What the other digits of nsolve say about points goes with them: an unknown-based run refuses it.
void fall_back_to_unknowns(controls& c) {
  c.nstyp = unknown_based;
  c.internal = c.nprim = 0;
  c.dummy_primary = false;
  c.nint_weights = c.nint_pat = 1;
}

void choose_approach(controls& c, int napproach) {
  if (napproach <= variable_based) {
    c.nstyp = variable_based;
    if (c.nsys > 1 && napproach == variable_based)
      warn(warn_approach_changed,
           "The coupled system is solved as if it were scalar (variable-based approach).");
    return;
  }
  if (napproach == unknown_based) {
    c.nstyp = c.nsys == 1 ? variable_based : unknown_based;
    return;
  }
  if (!c.has_ip && c.nsys > 1) {
    info(message_class::warning, "You have requested a point-based solution approach.");
    info(message_class::warning, "However, vector <ip> is not defined / cannot be defined but nsys>1.");
    warn(warn_approach_changed, "Using the unknown-based approach instead!");
    fall_back_to_unknowns(c);
    return;
  }
  c.nstyp = point_based;
  c.nint_force = napproach - 2;
}

}  // namespace

int approach_or_default(int nsolve) { return nsolve == 0 ? parm().nsolve_default : nsolve; }

void read_approach(controls& c, const call_arguments& call) {
  if (c.nsys > 1 && call.ndiu < c.nnu) fail(ierr_bad_matrix, "Array <iu> not properly declared!");
  c.has_ip = call.ndip >= c.nnu && call.ndip > 1;

  const auto d = digits_of<9>(approach_or_default(call.nsolve));
  require_legal(d[1] <= 5, "napproach");
  require_legal(d[3] <= 6, "internal>6");
  c.internal = d[3];
  c.nprim = 10 * d[4] + d[5];
  require_legal(c.nprim <= c.nsys, "nprim");
  c.dummy_primary = c.nprim != 0 && d[6] != 0;
  require_legal(d[7] <= 5, "nint_weights>5");
  require_legal(d[8] <= 2, "nint_pat>2");
  c.nint_weights = d[7] == 0 ? 1 : d[7];
  c.nint_pat = d[8] == 0 ? 1 : d[8];
  read_smoother(c, d[2]);
  choose_approach(c, d[1]);
  if (c.nsys == 1 && norm_based(c))
    fail(ierr_inconsistent_input, "Norm-based approach not meaningful in scalar case!");
}

}  // namespace tier
