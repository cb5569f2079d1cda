// The store of a level's matrix with its rows by their state, for as long as cycles smooth F and C rows
// apart. Made by prepare_smoothers for one solution.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

/// Entries of a level's C rows: the room that rows_by_state needs while it moves rows.
std::int64_t entries_of_coarse_rows(const level& l);

/// Moves the C rows of a level behind its F rows, both ascending, and back again when its life ends. A sweep
/// over the rows of one state then reads memory without gaps, which nearly halves its time. Level 1 is the
/// caller's: its ja and a are moved in place, its ia is replaced meanwhile.
class rows_by_state {
 public:
  /// `store` has room for entries_of_coarse_rows(l) and stays until the end, so that going back can't fail.
  rows_by_state(level& l, view<double> store);
  ~rows_by_state();
  rows_by_state(const rows_by_state&) = delete;
  rows_by_state& operator=(const rows_by_state&) = delete;

  int fine() const { return fine_; }  // F rows are at places 1..fine, C rows behind

 private:
  std::int64_t coarse_entries() const { return ia_[level_.n + 1] - ia_[fine_ + 1]; }

  level& level_;
  view<int> natural_;  // ia of the rows in the order of their numbers
  view<double> store_;
  work_array<int> ia_, order_;
  int fine_ = 0;
};

}  // namespace tier
