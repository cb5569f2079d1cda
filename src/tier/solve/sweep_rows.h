// The rows of a level as Gauss-Seidel visits them: by state and by thread.
// Made for every level that it smooths, for one solution; used by relx_gs.
#pragma once

#include <array>
#include <vector>

#include "tier/solve/rows_by_state.h"
#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Places first..last.
struct stretch {
  int first = 1, last = 0;
  bool empty() const { return last < first; }
};

/// Rows of one thread: lo..hi, and the places of those that are F and C.
struct row_block {
  int lo = 1, hi = 0;
  stretch fine, coarse;
  bool has(int row) const { return lo <= row && row <= hi; }
};

/// What one thread smooths.
struct thread_rows {
  std::array<row_block, 2> range;
  work_array<int> foreign;  // columns of its rows that other threads own, ascending

  bool has(int row) const { return range[0].has(row) || range[1].has(row); }
};

/// With threads the rows lie in 2 * team blocks; thread t owns blocks t and t + team. Where the two faces of
/// a thin wall are numbered one after the other, it then owns both ends of the strong couplings through the
/// wall, which would suffer most from old values. The blocks of a coarse level are those of its finer one.
class sweep_rows {
 public:
  sweep_rows() = default;
  /// sorted   keeps the rows of l by their states, null: they stand in the order of their numbers
  /// finer    the next finer level, null where there is none
  /// scratch  threads * n numbers
  sweep_rows(const level& l, const rows_by_state* sorted, const sweep_rows* finer, vector scratch);

  bool by_state() const { return by_state_; }
  int team() const { return team_; }
  const row_block& all() const { return all_; }
  const thread_rows& of_thread(int t) const { return threads_[static_cast<std::size_t>(t)]; }

 private:
  /// The part of rows lo..hi of the level.
  row_block range_of(const level& l, int lo, int hi) const;
  void share_out(const level& l, const sweep_rows* finer);
  void find_foreign_columns(const level& l, vector scratch);

  row_block all_;
  bool by_state_ = false;
  int team_ = 1;
  std::vector<int> coarse_bounds_;  // [0..2 team] first row of each block, in numbers of the next level
  std::vector<thread_rows> threads_;
};

}  // namespace tier
