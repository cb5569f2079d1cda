// Interpolation with weights and pattern from the matrix: direct, standard, extended and multipass.
// Called by driver_int.
#pragma once

#include "tier/setup/interpolation_row.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// All kinds but multipass. Builds iw, jw, w of the level from its sorted matrix and its states; a fine
/// variable that cannot be interpolated becomes C in icg. Returns how many did.
///   d e_i + sum_N+ a_ij e_j + sum_N- a_ij e_j = 0 over the row's remaining entries; those that are not
///   interpolatory are made up by scaling the interpolatory ones of their sign, or go to the diagonal d.
/// own_unknown: couplings within an unknown alone. by_points: variables of a point become C together.
/// Stueben, Algebraic Multigrid: An Introduction with Applications, GMD Report 70 (1999), section 7.
int pwint1_aa(level& lv, const interpolation_options& o, bool own_unknown, bool by_points);

struct multipass_counts {
  int turned_c = 0, turned_ff = 0, attempts = 0, passes = 0;
};

/// Multipass: rows without a strong C neighbour wait for a later pass, in which strong F neighbours
/// that are interpolated by then are replaced by their rows. Variables that no pass reaches become C while
/// the coarse level stays below largest_coarse_share, else FF, and another attempt is made.
multipass_counts pwint2_aa(level& lv, const interpolation_options& o, bool own_unknown, bool by_points);

struct improvement_counts {
  int truncated_by_sign = 0, all_connections = 0;
};

/// Jacobi improvement: each F row is the row of A with its F neighbours replaced by their interpolation rows.
/// Rows that come to nothing are tried with a truncation limit per sign, with all C connections, and stay as
/// they were at last.
improvement_counts pwiter(level& lv, const interpolation_options& o, bool own_unknown, bool by_points);

/// Gives the other unknowns of each fine point the interpolation of its primary unknown.
void pwforce(level& lv, int nprim);

}  // namespace tier
