// Rules that end coarsening.
// Called by the strength and splitting steps of create_levels.
#pragma once

#include "tier/setup/setup_state.h"

namespace tier {

/// Notes and, at print level 0 or above, writes ">>> Coarsening stopped: <reason>".
coarsening stop_coarsening(setup_state& t, const std::string& reason);

/// A level of more than nptmax variables is no task for a direct solver: nrc 6 to 11 becomes nrc_emergency.
void apply_emergency_rule(controls& c, int variables);

/// Few variables, or a density at which a direct solution is cheaper.
coarsening test_size(setup_state& t, const level& lv);

/// Too few C- or F-variables after the split.
coarsening test_split(setup_state& t, const level& lv, const split_counts& n);
coarsening test_fine_count(setup_state& t, const level& lv, const split_counts& n);

/// Few C-variables on a level that is not large.
coarsening test_coarse_size(setup_state& t, const level& lv, double c_variables);

/// Slow coarsening: a warning once a level, the end from term_coarsening on.
coarsening test_ratio(setup_state& t, int k, double ratio, const char* label);

}  // namespace tier
