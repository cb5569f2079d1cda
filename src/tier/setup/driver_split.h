// Splitting step of a level: first pass, aggressive coarsening, second pass, points, stopping rules.
// Called by create_levels.
#pragma once

#include "tier/setup/pcol.h"

namespace tier {

struct setup_state;
enum class coarsening;

struct splitting_options {
  pcol_options first_pass;                // with the fields that aren't those of a level
  int paths = 0;                          // of aggressive coarsening, see reduce; 0: standard (nred)
  int aggressive_levels = 1;              // from the finest on
  int reduce_steps = 1;                   // of aggressive coarsening on each
  double second_pass_limit = 0;           // see second_pass; 0: none (npcol)
  bool unusable_points_become_c = false;  // points with a row that can't be interpolated (vio_dd)
  int threads = 2;  // 0 first pass serial, 2 reduce in threads too, 5 in any team (icolor_omp)

  bool is_aggressive(int k) const { return paths > 0 && k <= aggressive_levels; }
};

/// Splits level k; icg holds the states afterwards.
coarsening driver_split(setup_state& t, int k, bool aggressive);

}  // namespace tier
