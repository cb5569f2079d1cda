// Interpolation with weights and pattern from the matrix: direct, standard, extended and multipass.
// Called by driver_int.
#pragma once

#include "tier/frame/hierarchy.h"
#include "tier/setup/interpolation_row.h"

namespace tier {

/// nwtint 1 to 3. Builds iw, jw, w of the level from its sorted matrix and its states; a fine variable that
/// cannot be interpolated becomes C in icg. Returns how many did.
///   d e_i + sum_N+ a_ij e_j + sum_N- a_ij e_j = 0 over the row's remaining entries; those that are not
///   interpolatory are made up by scaling the interpolatory ones of their sign, or go to the diagonal d.
/// own_unknown: couplings within an unknown alone. by_points: variables of a point become C together.
/// Stueben, Algebraic Multigrid: An Introduction with Applications, GMD Report 70 (1999), section 7.
int pwint1_aa(level& lv, const interpolation_options& o, bool own_unknown, bool by_points);

struct multipass_counts {
  int turned_c = 0, turned_ff = 0, attempts = 0, passes = 0;
};

}  // namespace tier
