// The caller's rows as blocks: which rows make a point, and the block rows of the caller's matrix in double.
// Called by set-up, and by the preconditioner to put vectors into the order of points.
#pragma once

#include "tier/aggregation/block_matrix.h"
#include "tier/store/hierarchy.h"

namespace tier::aggregation {

/// Rows by point. A point with fewer rows than the largest one has empty places at its end, which count as
/// unknowns that are 0.
struct point_layout {
  int rows = 0, points = 0, block = 0;  // block: rows of the largest point
  from_zero<int> point;                 // [0..rows-1] of a row
  from_zero<int> place;                 // [0..rows-1] of a row: point * block + position in the point
  from_zero<int> first;                 // [0..points] places of the points in `member`
  from_zero<int> member;                // [0..rows-1] rows of the points, ascending in each
};

/// Points by the level's ip, without it each row is one. A point of more than 12 rows ends the call (50).
point_layout lay_out_points(const level& fine);

/// Block rows of the caller's matrix times `scale`. A place of the diagonal
/// without a row gets the mean of the others.
class caller_rows {
 public:
  caller_rows(const level& fine, const point_layout& layout, double scale);

  /// Distinct columns of block row i; written to `columns` where it isn't null, the diagonal first.
  int columns(int i, int tid, int* columns);
  /// The blocks of row i in the order of `columns`, block x block each, by columns.
  void blocks(int i, int tid, const int* columns, int count, double* out);

 private:
  const level& fine_;
  const point_layout& layout_;
  double scale_;
  from_zero<int> mark_;  // [threads * points] of a column: row that saw it last, then its place in the row
};

/// Power of two that brings the largest diagonal entry near 1.
double scale_of(const level& fine);

}  // namespace tier::aggregation
