// Block interpolation: one small dense system for each fine point.
// Called by driver_int for point-based runs with block-wise interpolation.
#pragma once

#include "tier/store/choices.h"
#include "tier/store/hierarchy.h"

namespace tier {

struct block_options {
  interpolation_kind kind = interpolation_kind::direct;  // standard and extended eliminate strong F points
  int nprim = 0;  // the unknown whose row tells the strong points; 0: the primary matrix does
  block_norm_kind norm = block_norm_kind::frobenius;  // prim_norm
  double etr = 0.2;  // truncation limit relative to the largest block, 0: none
  bool use_primary_matrix = false;
  bool may_eliminate = true;  // where a row fails without, else that is a fault (allow_elim)
};

/// Builds iw, jw, w of the level: point i has the weights w_j = -s D^-1 A_ij over its strong C points j, with
/// the diagonal block D and s the sum of all block norms over that of the kept ones. A point without weights
/// becomes C with all its variables; returns how many variables did. Serial.
int pbint1(level& lv, const block_options& o);

/// The same in passes: points without strong C point wait until strong F points have weights. ierr 140 where
/// a pass reaches nobody.
int pbint2(level& lv, const block_options& o);

}  // namespace tier
