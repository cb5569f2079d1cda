// The greedy choice of C-variables on a block of consecutive rows, by bucketed measures.
// Used by pcol and rcol; a thread runs it on its own block, memory is taken outside of parallel regions.
#pragma once

#include <cstdint>

#include "tier/setup/couplings.h"
#include "tier/store/work_arrays.h"

namespace tier {

/// First pass of Ruge and Stueben on rows lo..hi; couplings that leave the block count for nothing.
/// Call in order: allocate_counts, count, allocate_lists, run. Time and memory
/// are linear in the block's strong couplings.
class first_pass {
 public:
  /// state [1..n]: C, FF, not taking part or undecided at the start; run turns undecided ones into C and F.
  first_pass(const couplings& g, view<int> state, int lo, int hi) : g_(g), state_(state), lo_(lo), hi_(hi) {}

  void allocate_counts();
  void count();
  void allocate_lists();
  void run();

  /// After all blocks have run, serially: turns F variables C that are strongly coupled with an F variable of
  /// another block and share no C variable with it.
  void settle_border();

  std::int64_t strong() const { return strong_; }    // couplings within the block
  std::int64_t leaving() const { return leaving_; }  // out of it

 private:
  /// What a visit to a variable touches shares a cache line: the choices jump about in the matrix.
  struct node {
    int next = 0, prev = 0;
    int measure = -1;    // rows that depend on it, F ones twice; -1 when decided
    int deferred = -1;   // link of the deferred list, -1 when not in it
    int dependents = 0;  // where its list begins; it ends where that of the next node does
    int row = 0;         // place of its diagonal in the matrix
  };

  int rows() const { return hi_ - lo_ + 1; }
  node& at(int i) { return nodes_[i - lo_ + 1]; }
  /// Heads of the lists stand behind the variables and an end mark.
  int head_of(int measure) const { return rows() + 2 + measure; }
  bool in_block(int j) const { return j >= lo_ && j <= hi_; }
  /// visit(j) for the strong couplings within the block of the row whose diagonal stands at place `row`.
  template <class Visit>
  void for_strong(int row, Visit visit) const;
  void transpose();
  void insert(int i);
  void unlink(int i);
  void defer(int i);
  void fetch_dependents(int i);
  void relink_deferred();
  template <bool listed>
  void choose(int i);

  couplings g_;
  view<int> state_;
  int lo_, hi_;
  int last_of_lower_half_ = lo_ - 1, first_of_upper_half_ = hi_ + 1;  // of the rows coupled with other blocks
  std::int64_t strong_ = 0, leaving_ = 0;
  int highest_ = 0;             // bound of all measures
  int top_ = 0;                 // highest measure of a non-empty list
  int deferred_ = 0;            // head of the deferred list, 0 when empty
  work_array<int> counts_;      // [2..rows+1] dependents of each; then [1..rows] where the next one goes
  work_array<int> dependents_;  // rows that depend on a variable
  work_array<node> nodes_;
};

/// The first pass on 1..n; with threads, each on its block of consecutive rows, unless more than 2 % of the
/// couplings join different blocks.
void run_first_pass(const couplings& g, view<int> state, bool threads);

/// Makes undecided variables F that found no C within their block but have one beyond it.
void settle_interfaces(const couplings& g, view<int> state);

/// True when one of the strong couplings of i has the state.
bool has_strong(const couplings& g, view<const int> state, int i, int wanted);

}  // namespace tier
