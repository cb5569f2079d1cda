// Choice of the smoother and its passes.
#include "tier/solve/smoother.h"

#include <string>

#include "tier/frame/ierr.h"
#include "tier/frame/info.h"
#include "tier/frame/timers.h"

namespace tier {

namespace {

constexpr int variable_based = 1;

void gauss_seidel_passes(cycle_state& s, int k, const sweep_code& code) {
  level& l = s.at(k);
  const bool split = k < s.levels() && l.has_states();
  const char* routine = s.c.nstyp == variable_based ? "relx_gs" : "relx_ugs";
  for (int pass = 0; pass < code.passes; ++pass)
    for (int m = 0; m < code.steps; ++m)
      relx_gs(l, split ? l.icg.data() : nullptr, l.f, l.u, code.step[static_cast<std::size_t>(m)], s.damping,
              s.scratch, routine);
}

}  // namespace

int smoother_type(const controls& c, int k) {
  const bool replaceable = c.nxtyp == 0 || c.nxtyp == 5;
  return k > 1 && replaceable && parm::nxtyp_coarse >= 0 ? parm::nxtyp_coarse : c.nxtyp;
}

void smoother(cycle_state& s, int k, const sweep_code& code) {
  if (code.passes == 0) {
    trace(1, " NO SMOOTHING !?", parm::itrace_smo);
    return;
  }
  const timed clock(phase::relaxation);
  switch (const int type = smoother_type(s.c, k); type) {
    case 0:
      return gauss_seidel_passes(s, k, code);
    default:
      fail(ierr_illegal_value, "Illegal value of parameter <" + std::to_string(type) + "> in (smoother)");
  }
}

}  // namespace tier
