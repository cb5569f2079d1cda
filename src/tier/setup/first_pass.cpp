// Bucketed first pass of the splitting.
#include "tier/setup/first_pass.h"

#include <algorithm>
#include <memory>

#include "tier/setup/pcol.h"
#include "tier/store/info.h"
#include "tier/store/numbered.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

bool has_strong_coupling(const couplings& g, int i, int j) {
  for (int p = g.ia[i] + 1; p <= g.last_strong(i); ++p)
    if (g.ja[p] == j) return true;
  return false;
}

}  // namespace

template <class Visit>
void first_pass::for_strong(int row, Visit visit) const {
  const int last = g_.ja[row];  // the place of the last strong coupling
  for (int p = row + 1; p <= last; ++p) {
    const int j = g_.ja[p];
    if (in_block(j)) visit(j);
  }
}

void first_pass::allocate_counts() { counts_.allocate(std::int64_t{rows()} + 1, "counts", "pcol"); }

void first_pass::count() {
  std::fill_n(counts_.data(), counts_.size(), 0);
  int* const counts = counts_.data() - lo_ + 1;  // counts[j]: dependents of variable j
  std::int64_t all = 0;
  for (int i = lo_; i <= hi_; ++i) {
    if (state_[i] == state_not_taking_part) continue;
    const int strong = std::max(0, g_.last_strong(i) - g_.ia[i]);
    int within = 0;
    for_strong(g_.ia[i], [counts, &within](int j) {
      ++counts[j];
      ++within;
    });
    all += strong;
    if (within == strong) continue;
    if (i - lo_ < rows() / 2) {
      last_of_lower_half_ = i;
    } else {
      first_of_upper_half_ = std::min(first_of_upper_half_, i);
    }
  }
  int most = 0;
  for (int k = 2; k <= rows() + 1; ++k) {
    most = std::max(most, counts_[k]);
    strong_ += counts_[k];
  }
  leaving_ = all - strong_;
  highest_ = 2 * most;  // each dependent raises the measure once more when it becomes F
}

void first_pass::allocate_lists() {
  dependents_.allocate(strong_, "dependents", "pcol");
  nodes_.allocate(std::int64_t{rows()} + 2 + highest_, "lists", "pcol");
}

void first_pass::transpose() {
  int first = 1;
  for (int i = lo_; i <= hi_; ++i) {
    const int count = counts_[i - lo_ + 2];
    counts_[i - lo_ + 1] = first;
    at(i) = {.measure = state_[i] == state_undecided ? count : -1, .dependents = first, .row = g_.ia[i]};
    first += count;
  }
  at(hi_ + 1) = {.dependents = first};
  int* const free = counts_.data() - lo_;  // free[j]: next place in the list of variable j
  for (int i = lo_; i <= hi_; ++i)
    if (state_[i] != state_not_taking_part) for_strong(g_.ia[i], [&](int j) { dependents_[free[j]++] = i; });
}

void first_pass::insert(int i) {
  node& v = at(i);
  node& h = nodes_[head_of(v.measure)];
  v.prev = head_of(v.measure);
  v.next = h.next;
  nodes_[h.next].prev = i - lo_ + 1;
  h.next = i - lo_ + 1;
}

void first_pass::unlink(int i) {
  const node& v = at(i);
  nodes_[v.next].prev = v.prev;
  nodes_[v.prev].next = v.next;
}

void first_pass::defer(int i) {
  node& v = at(i);
  if (v.deferred >= 0) return;
  v.deferred = deferred_;
  deferred_ = i;
  __builtin_prefetch(&dependents_[v.dependents]);  // it may be chosen soon
}

// Few of them, as a variable may come back to the top as often as it has dependents.
void first_pass::fetch_dependents(int i) {
  constexpr int most = 16;
  const int first = at(i).dependents, end = std::min(at(i + 1).dependents, first + most);
  for (int t = first; t < end; ++t) __builtin_prefetch(&nodes_[dependents_[t] - lo_ + 1]);
}

// A variable moves once for each C choice, whatever changed its measure, to the young end of its new list.
void first_pass::relink_deferred() {
  while (deferred_ != 0) {
    const int i = deferred_;
    node& v = at(i);
    deferred_ = v.deferred;
    v.deferred = -1;
    if (v.measure < 0) continue;
    unlink(i);
    if (v.measure >= top_) fetch_dependents(i);
    top_ = std::max(top_, v.measure);
    insert(i);
  }
}

template <bool listed>
void first_pass::choose(int i) {
  const int first = at(i).dependents, end = at(i + 1).dependents;
  for (int t = first; t < end; ++t) {
    const node& v = at(dependents_[t]);
    if (v.measure >= 0) __builtin_prefetch(&g_.ja[v.row]);
  }
  for (int t = first; t < end; ++t) {
    const int j = dependents_[t];
    node& v = at(j);
    if (v.measure < 0) continue;
    state_[j] = state_f;
    if (listed) unlink(j);
    v.measure = -1;
    for_strong(v.row, [this](int l) {
      if (at(l).measure < 0) return;
      ++at(l).measure;
      if (listed) defer(l);
    });
  }
  for_strong(at(i).row, [this](int j) {
    if (at(j).measure < 0) return;
    --at(j).measure;
    if (listed) defer(j);
  });
  if (listed) relink_deferred();
}

void first_pass::run() {
  transpose();
  for (int i = lo_; i <= hi_; ++i)
    if (state_[i] == state_c) choose<false>(i);
  for (int measure = 0; measure <= highest_; ++measure) {
    const int self = head_of(measure);
    nodes_[self] = {.next = self, .prev = self};
  }
  for (int i = lo_; i <= hi_; ++i) {
    if (at(i).measure < 0) continue;
    top_ = std::max(top_, at(i).measure);
    insert(i);
  }
  while (top_ > 0) {  // a variable that no row depends on is never chosen
    const int oldest = nodes_[head_of(top_)].prev;
    if (oldest > rows()) {
      --top_;
      continue;
    }
    const int i = oldest + lo_ - 1;
    unlink(i);
    state_[i] = state_c;
    at(i).measure = -1;
    choose<true>(i);
  }
}

// Where the patterns of two blocks meet, F variables may lie side by side without a C variable that both
// depend on, which is what makes a row of F variables there interpolate badly; one of them becomes C.
void first_pass::settle_border() {
  const auto shares_c = [this](int i, int j) {
    for (int p = g_.ia[j] + 1; p <= g_.last_strong(j); ++p) {
      const int l = g_.ja[p];
      if (state_[l] == state_c && has_strong_coupling(g_, i, l)) return true;
    }
    return false;
  };
  const auto fine = [this](int i) { return state_[i] == state_f || state_[i] == state_undecided; };
  const auto settle = [&](int i) {
    if (!fine(i)) return;
    for (int p = g_.ia[i] + 1; p <= g_.last_strong(i); ++p) {
      const int j = g_.ja[p];
      if (in_block(j) || !fine(j) || shares_c(i, j)) continue;
      state_[i] = state_c;
      return;
    }
  };
  for (int i = lo_; i <= last_of_lower_half_; ++i) settle(i);
  for (int i = first_of_upper_half_; i <= hi_; ++i) settle(i);
}

namespace {

using blocks_of_rows = numbered_list<std::unique_ptr<first_pass>>;

template <class Step>
void for_blocks(const blocks_of_rows& blocks, Step step) {
  const int team = blocks.count();
  for_chunks(team, team, [&](const row_chunk& range) {
    for (int b = range.lo; b <= range.hi; ++b) step(*blocks[b - 1]);
  });
}

/// Blocks with their couplings counted.
blocks_of_rows counted_blocks(const couplings& g, view<int> state, int team) {
  blocks_of_rows blocks;
  for (int tid = 0; tid < team; ++tid) {
    int lo = 1, hi = g.n;
    chunk_of_thread(1, g.n, tid, team, lo, hi);
    blocks.push_back(std::make_unique<first_pass>(g, state, lo, hi));
    blocks.back()->allocate_counts();
  }
  for_blocks(blocks, [](first_pass& block) { block.count(); });
  return blocks;
}

/// True when so many couplings join the blocks that a split by blocks would miss what matters, as where the
/// two faces of a thin wall are numbered one after the other.
bool too_entangled(const blocks_of_rows& blocks) {
  constexpr double most_leaving = 0.02;
  std::int64_t leaving = 0, strong = 0;
  for (const auto& block : blocks) {
    leaving += block->leaving();
    strong += block->strong();
  }
  return static_cast<double>(leaving) > most_leaving * static_cast<double>(strong);
}

}  // namespace

void run_first_pass(const couplings& g, view<int> state, bool threads) {
  const int team = threads ? setup_team(g.n) : 1;
  blocks_of_rows blocks = counted_blocks(g, state, team);
  if (too_entangled(blocks)) {
    blocks.clear();
    blocks = counted_blocks(g, state, 1);
  }
  for (const auto& block : blocks) block->allocate_lists();
  trace(trace_topic::splitting, "pcol:after initialization");
  for_blocks(blocks, [](first_pass& block) { block.run(); });
  trace(trace_topic::splitting, "pcol:after main coarsening phase");
  if (blocks.count() > 1)
    for (const auto& block : blocks) block->settle_border();  // in row order, each change at once
}

void settle_interfaces(const couplings& g, view<int> state) {
  for (int i = 1; i <= g.n; ++i)
    if (state[i] == state_undecided && has_strong(g, state, i, state_c)) state[i] = state_f;
  trace(trace_topic::splitting, "pcol:after interface_split");
}

bool has_strong(const couplings& g, view<const int> state, int i, int wanted) {
  for (int p = g.ia[i] + 1; p <= g.last_strong(i); ++p)
    if (state[g.ja[p]] == wanted) return true;
  return false;
}

}  // namespace tier
