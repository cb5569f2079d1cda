// Set-up of the hierarchy: decoding of its control digits and the level loop. Called by tier_main.
#pragma once

#include "tier/setup/setup_state.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Decodes ecg, ewt, etr, ncg, nwt and ntr, checks their ranges and writes the set-up report.
void crsng_data(const controls& c);

/// Makes levels 2, 3, ... of `h`, whose level 1 is set; may replace c.nrc by nrc_emergency.
void create_levels(hierarchy& h, controls& c);

/// What the last set-up counted on each level and why it ended.
const setup_record& latest_setup();

/// Forms the coarse operators anew from level 1's values over the kept interpolation (re-start 3).
void recompute_operators(hierarchy& h, const controls& c);

}  // namespace tier
