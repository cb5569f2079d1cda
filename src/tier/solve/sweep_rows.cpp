// Rows by state and by thread.
#include "tier/solve/sweep_rows.h"

#include <algorithm>

#include "tier/store/row_loop.h"

namespace tier {

sweep_rows::sweep_rows(const level& l, const rows_by_state* sorted, const sweep_rows* finer, vector scratch)
    : by_state_(sorted != nullptr), team_(matrix_team(l.n)) {
  const int fine = sorted ? sorted->fine() : l.n;
  all_ = {1, l.n, {1, fine}, {fine + 1, l.n}};
  if (team_ == 1) return;
  share_out(l, finer);
  find_foreign_columns(l, scratch);
}

row_block sweep_rows::range_of(const level& l, int lo, int hi) const {
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
  const int blocks = 2 * team_;
  const bool follows =
      finer && finer->by_state_ && finer->team_ == team_ && finer->coarse_bounds_.back() == l.n + 1;
  std::vector<int> bounds(static_cast<std::size_t>(blocks) + 1, l.n + 1);
  for (int b = 0; b < blocks; ++b)
    bounds[static_cast<std::size_t>(b)] =
        follows ? finer->coarse_bounds_[static_cast<std::size_t>(b)] : 1 + b * (l.n / blocks);
  coarse_bounds_.assign(bounds.size(), 1);
  threads_.resize(static_cast<std::size_t>(team_));
  for (int b = 0; b < blocks; ++b) {
    const auto block = static_cast<std::size_t>(b);
    const row_block part = range_of(l, bounds[block], bounds[block + 1] - 1);
    threads_[static_cast<std::size_t>(b % team_)].range[static_cast<std::size_t>(b / team_)] = part;
    coarse_bounds_[block + 1] = coarse_bounds_[block] + part.coarse.last - part.coarse.first + 1;
  }
}

void sweep_rows::find_foreign_columns(const level& l, vector scratch) {
  const auto marks_of = [&](int t) {
    return reinterpret_cast<char*>(scratch.data() + static_cast<std::int64_t>(t) * l.n);
  };
  std::vector<int> count(static_cast<std::size_t>(team_));
  const auto mark = [&](int t) {
    const thread_rows& own = of_thread(t);
    char* const marks = marks_of(t);
    std::fill(marks, marks + l.n, '\0');
    const auto mark_columns = [&](const stretch& rows) {
      for (int p = l.ia[rows.first]; p < l.ia[rows.last + 1]; ++p)
        if (!own.has(l.ja[p])) marks[l.ja[p] - 1] = 1;
    };
    for (const row_block& part : own.range)
      for (const stretch& rows : {part.fine, part.coarse})
        if (!rows.empty()) mark_columns(rows);
    count[static_cast<std::size_t>(t)] = static_cast<int>(std::count(marks, marks + l.n, '\1'));
  };
  for_chunks(l.n, team_, [&](const row_chunk& c) {
    for (int t = c.tid; t < team_; t += c.team) mark(t);
  });
  for (int t = 0; t < team_; ++t)
    threads_[static_cast<std::size_t>(t)].foreign.allocate(count[static_cast<std::size_t>(t)], "foreign",
                                                           "sweep_rows");
  for_chunks(l.n, team_, [&](const row_chunk& c) {
    for (int t = c.tid; t < team_; t += c.team) {
      const char* const marks = marks_of(t);
      int found = 0;
      for (int j = 1; j <= l.n; ++j)
        if (marks[j - 1]) threads_[static_cast<std::size_t>(t)].foreign[++found] = j;
    }
  });
}

}  // namespace tier
