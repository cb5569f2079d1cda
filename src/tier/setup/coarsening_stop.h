// Rules that end coarsening.
// Called by the strength and splitting steps of create_levels.
#pragma once

#include <string>

#include "tier/setup/pcol.h"
#include "tier/store/choices.h"
#include "tier/store/hierarchy.h"

namespace tier {

struct setup_state;

/// What the steps of a level answer: go on, or the hierarchy ends with this level.
enum class coarsening { goes_on, stops };

/// When coarsening ends.
struct coarsening_limits {
  int most_levels = max_levels;  // 1..25, least of levelx and max_level
  int small = 100;               // variables of a level that isn't coarsened (nptmn)
  int largest_direct = 1500;     // variables of a last level for a direct solver ... (nptmax)
  coarsest_solver otherwise =
      coarsest_solver::ilut_bicgstab;  // ... and the solver of a larger one (nrc_emergency)
  double density = 0.2;   // entries over those of a full matrix, from which on it is not worth it (densx)
  double slow = 0.75;     // ratio of variables that draws a warning (slow_coarsening)
  double too_slow = 0.9;  // and that ends set-up (term_coarsening)
  int enforced = -1;      // level at which coarsening counts as too slow, for trials; below 1: none
};

/// Notes and, at print level 0 or above, writes ">>> Coarsening stopped: <reason>".
coarsening stop_coarsening(setup_state& t, const std::string& reason);

/// A level of more than largest_direct variables is no task for a direct solver: another takes its place.
void apply_emergency_rule(setup_state& t, int variables);

/// Few variables, or a density at which a direct solution is cheaper.
coarsening test_size(setup_state& t, const level& lv);

/// Too few C- or F-variables after the split.
coarsening test_split(setup_state& t, const level& lv, const split_counts& n);
coarsening test_fine_count(setup_state& t, const level& lv, const split_counts& n);

/// Few C-variables on a level that is not large.
coarsening test_coarse_size(setup_state& t, const level& lv, double c_variables);

/// Slow coarsening: a warning once a level, the end from `too_slow` on.
coarsening test_ratio(setup_state& t, int k, double ratio, const char* label);

}  // namespace tier
