// Rows by state and by thread.
#include "tier/solve/sweep_rows.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr int least_rounds = 2, most_rounds = 32;
constexpr int least_block_entries = 1024;  // below it threads wait for each other longer than they work
// Rows with larger diagonals, as shares of all: up to `few` cost hardly a step, `many` a quarter as many
// again.
constexpr double few = 0.06, many = 0.5;

}  // namespace

sweep_rows::sweep_rows(const level& l, const rows_by_state* sorted, const sweep_rows* finer, vector scratch,
                       int rounds)
    : by_state_(sorted != nullptr), team_(matrix_team(l.n)) {
  const int fine = sorted ? sorted->fine() : l.n;
  all_ = {1, l.n, {1, fine}, {fine + 1, l.n}};
  if (team_ == 1) return;
  added_.allocate(l.n, "added", "sweep_rows");
  if (rounds > 0) {
    damped_share(l, finer, rounds);
    find_foreign_columns(l, scratch);
  } else if (choose_rounds(l, finer) > many) {
    team_ = rounds_ = 1;
    threads_.clear();
    added_.release();
  } else {
    find_foreign_columns(l, scratch);
  }
}

double sweep_rows::damped_share(const level& l, const sweep_rows* finer, int rounds) {
  rounds_ = rounds;
  share_out(l, finer);
  return static_cast<double>(add_to_diagonals(l)) / l.n;
}

double sweep_rows::choose_rounds(const level& l, const sweep_rows* finer) {
  const int most = std::min(most_rounds, l.entries() / (team_ * least_block_entries));
  double share = damped_share(l, finer, least_rounds), least = share;
  int best = least_rounds;
  for (int rounds = 2 * least_rounds; rounds <= most && least > few; rounds *= 2) {
    share = damped_share(l, finer, rounds);
    if (share >= least) continue;
    least = share;
    best = rounds;
  }
  return best == rounds_ ? least : damped_share(l, finer, best);
}

row_block sweep_rows::block_of(const level& l, int lo, int hi) const {
  if (!by_state_) return {lo, hi, {lo, hi}, {}};
  const int* const order = l.order.data();
  const auto part = [&](const stretch& rows) -> stretch {
    const int *begin = order + rows.first - 1, *end = order + rows.last;
    return {static_cast<int>(std::lower_bound(begin, end, lo) - order) + 1,
            static_cast<int>(std::lower_bound(begin, end, hi + 1) - order)};
  };
  return {lo, hi, part(all_.fine), part(all_.coarse)};
}

void sweep_rows::share_out(const level& l, const sweep_rows* finer) {
  const int blocks = rounds_ * team_;
  const bool follows = finer && finer->by_state_ && finer->team_ == team_ && finer->rounds_ == rounds_ &&
                       finer->coarse_bounds_.back() == l.n + 1;
  const auto bound = [&](int b) {
    return follows ? finer->coarse_bounds_[b] : 1 + static_cast<int>(std::int64_t{l.n} * b / blocks);
  };
  coarse_bounds_.assign(blocks + 1, 1);
  threads_.resize(team_);
  for (thread_rows& t : threads_) t.block.clear();
  for (int b = 0; b < blocks; ++b) {
    const row_block part = block_of(l, bound(b), bound(b + 1) - 1);
    threads_[b % team_].block.push_back(part);
    coarse_bounds_[b + 1] = coarse_bounds_[b] + part.coarse.last - part.coarse.first + 1;
  }
}

stretch sweep_rows::rows_of_round(int round) const {
  return {threads_.front().block[round].lo, threads_.back().block[round].hi};
}

int sweep_rows::add_in_block(const level& l, const row_block& own, const stretch& together) {
  int rows = 0;
  for (const stretch& places : {own.fine, own.coarse})
    for (int place = places.first; place <= places.last; ++place) {
      const int first = l.ia[place];
      double sum = 0.0;
      for (int p = first + 1; p < l.ia[place + 1]; ++p)
        if (together.first <= l.ja[p] && l.ja[p] <= together.last && !own.has(l.ja[p]))
          sum += std::abs(l.a[p]);
      const double diagonal = l.a[first];
      const bool outweighs = sum > 0.5 * std::abs(diagonal);
      added_[place] = outweighs ? std::copysign(sum, diagonal) : 0.0;
      rows += outweighs;
    }
  return rows;
}

int sweep_rows::add_to_diagonals(const level& l) {
  numbered_list<int> rows(team_, 0);
  for_chunks(l.n, team_, [&](const row_chunk& c) {
    for (int t = c.tid; t < team_; t += c.team)
      for (int round = 0; round < rounds_; ++round)
        rows[t] += add_in_block(l, of_thread(t).block[round], rows_of_round(round));
  });
  return std::accumulate(rows.begin(), rows.end(), 0);
}

void sweep_rows::mark_columns(const level& l, thread_rows& own, char* marks) {
  std::fill(marks, marks + l.n, '\0');
  const auto mark = [&](const stretch& places) {
    if (places.empty()) return;
    for (int p = l.ia[places.first]; p < l.ia[places.last + 1]; ++p) marks[l.ja[p] - 1] = 1;
  };
  for (const row_block& block : own.block) {
    mark(block.fine);
    mark(block.coarse);
  }
  for (const row_block& block : own.block) std::fill(marks + block.lo - 1, marks + block.hi, '\0');
}

void sweep_rows::collect_columns(thread_rows& own, const char* marks) const {
  int found = 0;
  for (int round = 0; round < rounds_; ++round) {
    const int before = found;
    const stretch rows = rows_of_round(round);
    for (int j = rows.first; j <= rows.last; ++j)
      if (marks[j - 1]) own.foreign[++found] = j;
    own.foreign_of_round[round] = {before + 1, found};
  }
}

void sweep_rows::find_foreign_columns(const level& l, vector scratch) {
  const auto for_threads = [&](auto work) {
    for_chunks(l.n, team_, [&](const row_chunk& c) {
      for (int t = c.tid; t < team_; t += c.team)
        work(threads_[t], reinterpret_cast<char*>(scratch.data() + static_cast<std::int64_t>(t) * l.n));
    });
  };
  for_threads([&](thread_rows& own, char* marks) { mark_columns(l, own, marks); });
  for (int t = 0; t < team_; ++t) {
    const char* const marks = reinterpret_cast<char*>(scratch.data() + static_cast<std::int64_t>(t) * l.n);
    thread_rows& own = threads_[t];
    own.foreign.allocate(std::count(marks, marks + l.n, '\1'), "foreign", "sweep_rows");
    own.foreign_of_round.resize(rounds_);
  }
  for_threads([&](thread_rows& own, const char* marks) { collect_columns(own, marks); });
}

}  // namespace tier
