// The primary matrix P of the points, from norms of the blocks of the level's matrix.
// Called by the strength step of point-based runs with an internal primary matrix.
#pragma once

#include "tier/store/choices.h"
#include "tier/store/hierarchy.h"

namespace tier {

struct primary_options {
  int nprim = 0;  // above 0: P has the pattern of this unknown's block, else all couplings
  block_norm_kind norm = block_norm_kind::frobenius;  // prim_norm
  bool sum_diagonal = true;  // diagonal: sum of the row's other norms; else the norm of the diagonal block
  double truncation = 0.0;  // off-diagonals up to this share of the diagonal are left out, 0: none (ntr_prim)
};

/// Builds ib, jb, b of the level, rows of points with the diagonal first and minus the norms off it.
void build_primary_matrix(level& lv, const primary_options& o);

/// The norm of a dense block of `rows` times `columns` by rows.
double block_norm(const double* block, int rows, int columns, block_norm_kind norm);

}  // namespace tier
