// One entry for every relaxation on every level. Called by the cycle, the one-level path and cl_smo.
#pragma once

#include "tier/solve/cycle_state.h"

namespace tier {

/// All passes of `code` on level k, by the smoother type nxtyp; ILU types make one sweep per pass.
/// Errors: 20 for an unknown step or type, 220 for a singular block.
void smoother(cycle_state& s, int k, const sweep_code& code);

/// Makes what the smoothers of all levels need: rows by state and by thread, decompositions, point
/// structures. Errors: 50 without ip, 200, 230, 240.
void prepare_smoothers(cycle_state& s);

/// Smoother type that level k uses: nxtyp, or nxtyp_coarse in place of 0 and 5 on coarse levels.
smoother_kind smoother_type(const controls& c, int k);

}  // namespace tier
