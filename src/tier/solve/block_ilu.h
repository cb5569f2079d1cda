// Point structure of a level, dense blocks of points, and ILU(0) over them.
// Used by the point-block smoothers.
#pragma once

#include <cstdint>

#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Variables of each point: variable[start[p]] .. variable[start[p+1]-1], ascending, for points p
/// = 1..points; and room for the dense system of one point.
struct point_blocks {
  explicit point_blocks(const level& l);
  int size_of(int p) const { return start[p + 1] - start[p]; }
  int points = 0, largest = 0;
  work_array<int> start, variable;
  work_array<int> place;      // of a variable within its point, from 0
  work_array<double> system;  // [1..largest * (largest + 1)]
  work_array<int> order;      // [1..largest]
};

/// Solves the dense m x m system by rows, in place, with row pivoting or, `full`, row and column pivoting;
/// the solution takes the place of b. order: scratch of m integers. False: zero pivot.
bool solve_small(int m, double* a, double* b, int* order, bool full);

class block_ilu {
 public:
  /// Block ILU(0); `modified`: row sums of dropped blocks times `weight` go to the diagonal. False: a
  /// singular diagonal block.
  bool decompose(const level& l, const point_blocks& points, bool modified, double weight);

  bool made_with(bool modified, double weight) const {
    return modified == modified_ && (!modified || weight == weight_);
  }

  /// z <- (L U)^-1 v. v and z may be the same. No allocation.
  void solve(const_vector v, vector z);

 private:
  void collect_pattern(const level& l);
  void collect_values(const level& l);
  bool factorise_row(int p, bool modified, double weight);
  bool invert_diagonal(int p);
  double* block(int position) { return value_.data() + at_[position] - 1; }
  int find(int row, int column) const;

  const point_blocks* points_ = nullptr;
  bool modified_ = false;
  double weight_ = 1.0;
  work_array<int> start_, column_,
      diagonal_;                 // block rows with ascending columns; place of the diagonal block
  work_array<std::int64_t> at_;  // first value of a block, by rows
  work_array<double> value_, x_, small_;
  work_array<int> order_;
};

}  // namespace tier
