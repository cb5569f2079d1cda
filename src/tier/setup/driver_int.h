// Interpolation step of a level. Called by create_levels.
#pragma once

#include "tier/setup/setup_state.h"

namespace tier {

/// Builds iw, jw, w of level k from its states; F-variables that cannot be interpolated become C in icg.
void driver_int(setup_state& t, int k);

}  // namespace tier
