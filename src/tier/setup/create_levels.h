// Set-up of the hierarchy: its report and the level loop. Called by tier_main.
#pragma once

#include "tier/setup/setup_state.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Writes what the set-up will be.
void report_choices(const controls& c, const setup_options& o);

/// Makes levels 2, 3, ... of `h`, whose level 1 is set; may replace c.nrc by the solver for large levels.
void create_levels(hierarchy& h, controls& c, const setup_options& o);

/// What the last set-up counted on each level and why it ended.
const setup_record& latest_setup();

/// Forms the coarse operators anew from level 1's values over the kept interpolation (re-start 3).
void recompute_operators(hierarchy& h, const galerkin_options& o);

}  // namespace tier
