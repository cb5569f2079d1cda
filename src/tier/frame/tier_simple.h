// The wrapper without digit codes. TIER_LEAVE empties its control store.
#pragma once

namespace tier {

/// Forgets what TIER_SETCONTROL has set.
void reset_controls_of_simple();

}  // namespace tier
