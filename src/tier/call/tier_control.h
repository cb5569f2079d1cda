// The control layer between the checks of a call and its work. Called by tier_main.
#pragma once

#include "tier/call/tier_main.h"

namespace tier {

/// Does what the run digit asks for: iswit 1, 3, 4, 5 once, unless nothing is to do or the first guess
/// already satisfies eps; iswit 6 to 8 under the automatic control,
/// which decides when a hierarchy is made anew.
void tier_cntrl(call_state& s);

}  // namespace tier
