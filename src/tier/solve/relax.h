// Gauss-Seidel and Jacobi steps on one level. Called by the smoother.
#pragma once

#include "tier/frame/controls.h"
#include "tier/frame/hierarchy.h"
#include "tier/solve/vector_ops.h"

namespace tier {

/// The rows of a level by their state: C rows, then F rows, each ascending. A sweep over one kind reads its
/// matrix rows along this list, so that it knows the next ones early enough to fetch them.
///
/// With threads the rows lie in 2 * team blocks; thread t owns blocks t and t + team. Where the two faces of
/// a thin wall are numbered one after the other, it then owns both ends of the strong couplings through the
/// wall, which would suffer most from old values. The blocks of a coarse level are those of its finer one.
struct split_rows {
  split_rows() = default;
  explicit split_rows(const level& l, const split_rows* finer = nullptr);  // C: icg above 0
  work_array<int> row;  // negative: a border row, see below
  int coarse = 0;       // C rows are row[1..coarse]
  int team = 1;
  work_array<int> bounds;  // [1..2 team + 1] first row of each block, with threads

 private:
  /// Border rows have columns that their thread doesn't own.
  void mark_borders(const level& l);
};

/// Damping factors of the Jacobi step: one for all rows, or one per function.
struct jacobi_damping {
  double all = 0.5;
  const_vector by_function;  // [1..nsys], empty: `all`
};

/// One step on all rows of a level, in place: u_i <- (f_i - sum_{j/=i} a_ij u_j) / a_ii on the selected rows.
/// split    null where the level has no C and F rows
/// step     1 F rows, 2 all, 3 C rows ascending; 4 to 6 the same descending; 7 damped Jacobi on all rows;
///          a negative step runs in the other direction. Without states all rows are taken.
/// scratch  of the level's length; holds u as it was when a parallel step began, so that a thread reads rows
///          of other threads from there and timing never shows in the result.
/// Errors: 20 for an unknown step, named after `routine` ("relx_gs" or "relx_ugs").
void relx_gs(const level& l, const split_rows* split, const_vector f, vector u, int step,
             const jacobi_damping& damping, vector scratch, const char* routine);

}  // namespace tier
