// The rows of a level as Gauss-Seidel visits them: by state and by thread.
// Made for every level that it smooths, for one solution; used by relx_gs.
#pragma once

#include "tier/solve/rows_by_state.h"
#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"
#include "tier/store/numbered.h"

namespace tier {

/// Places first..last.
struct stretch {
  int first = 1, last = 0;
  bool empty() const { return last < first; }
};

/// Consecutive rows lo..hi, and the places of those that are F and C.
struct row_block {
  int lo = 1, hi = 0;
  stretch fine, coarse;
  bool has(int row) const { return lo <= row && row <= hi; }
};

/// What one thread smooths: a block a round, and what it reads of others' blocks.
struct thread_rows {
  numbered_list<row_block> block;           // [0..rounds-1]
  work_array<int> foreign;                  // columns of its rows that other threads own, ascending
  numbered_list<stretch> foreign_of_round;  // [0..rounds-1] those that are smoothed in a round
};

/// How threads share the rows of a level. Its rows lie in rounds * team blocks, ascending; thread t owns
/// block t of every round. All threads smooth their blocks of a round at once, each with the others' rows as
/// they were when the round began, and meet before the next. With an even number of rounds a thread owns both
/// faces of a thin wall that are numbered one after the other, and so both ends of the strong couplings
/// through it.
///
/// In a row whose entries in blocks smoothed at the same time have magnitudes of more than half the
/// diagonal's together, old values outweigh new ones and sweeps may diverge. There that sum is added to the
/// diagonal; a sweep and its reverse then are a positive definite preconditioner again (Baker, Falgout,
/// Kolev, Yang, SIAM J. Sci. Comput. 33 (2011) 2864-2887). It costs steps: where many rows need it, because
/// they are long or numbered without order, more rounds with smaller blocks take the place of two, or one
/// thread where blocks get too small.
class sweep_rows {
 public:
  sweep_rows() = default;
  /// sorted   keeps the rows of l by their states, null: they stand in the order of their numbers
  /// finer    the next finer level, null where there is none; its blocks are kept where they are as many
  /// scratch  threads * n numbers
  /// rounds   so many, whatever diagonals get larger; 0: as many as are best
  sweep_rows(const level& l, const rows_by_state* sorted, const sweep_rows* finer, vector scratch,
             int rounds = 0);

  bool by_state() const { return by_state_; }
  int team() const { return team_; }
  int rounds() const { return rounds_; }
  const row_block& all() const { return all_; }
  const thread_rows& of_thread(int t) const { return threads_[t]; }
  /// What a step in threads adds to the diagonal of the row at a place, with the diagonal's sign.
  view<const double> added() const { return added_; }

 private:
  /// The part of rows lo..hi of the level.
  row_block block_of(const level& l, int lo, int hi) const;
  /// Shares the rows out in as many rounds as leave few diagonals larger; returns their share.
  double choose_rounds(const level& l, const sweep_rows* finer);
  /// The share of larger diagonals with so many rounds.
  double damped_share(const level& l, const sweep_rows* finer, int rounds);
  void share_out(const level& l, const sweep_rows* finer);
  void find_foreign_columns(const level& l, vector scratch);
  void mark_columns(const level& l, thread_rows& own, char* marks);
  void collect_columns(thread_rows& own, const char* marks) const;
  /// Forms what is added to the diagonals; returns for how many rows.
  int add_to_diagonals(const level& l);
  int add_in_block(const level& l, const row_block& own, const stretch& together);
  /// The rows that are smoothed in a round.
  stretch rows_of_round(int round) const;

  row_block all_;
  bool by_state_ = false;
  int team_ = 1, rounds_ = 1;
  numbered_list<int> coarse_bounds_;  // [0..rounds * team] first row of a block, numbered as the next level's
  numbered_list<thread_rows> threads_;
  work_array<double> added_;  // [1..n] by place; empty with one thread
};

}  // namespace tier
