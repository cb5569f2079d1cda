// What the steps of one set-up share: hierarchy, controls, what was counted on each level, when it ended.
// Made by create_levels, handed to strength, splitting and interpolation.
#pragma once

#include <string>

#include "tier/setup/pcol.h"
#include "tier/setup/pwint_aa.h"
#include "tier/setup/rwsrt.h"
#include "tier/setup/setup_options.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"
#include "tier/store/numbered.h"

namespace tier {

/// Counters of one level's coarsening.
struct level_record {
  strength_counts strength;
  split_counts split;
  int turned_c = 0;            // F -> C by the interpolation
  double ratio = 0.0;          // C-variables after it / variables
  double mean_weights = 0.0;   // length of an F row
  multipass_counts multipass;  // attempts 0 for other interpolations
};

/// Counters of a whole set-up.
struct setup_record {
  numbered<level_record, max_levels + 1> at;  // [1..]
  std::string stop;                           // the rule that ended coarsening, blank: the number of levels
};

struct setup_state {
  hierarchy& h;
  controls& c;
  const setup_options& o;
  setup_record& record;
  bool warn_slow = true;     // the warning of slow coarsening may still come on this level
  bool split_matrix = true;  // with a primary matrix: the matrix itself is sorted too

  bool reports() const { return c.dump_level >= 0; }
  bool own_unknown() const { return c.nstyp != approach::by_variables; }
  bool by_points() const { return c.nstyp == approach::by_points; }
  bool uses_primary_matrix() const { return by_points() && c.internal != primary_matrix::of_primary_unknown; }
  /// The unknown whose rows alone are sorted and interpolated, 0: all.
  int effective_nprim() const {
    return by_points() && c.nint_force != point_interpolation::separate ? c.nprim : 0;
  }
};

}  // namespace tier
