// Jacobi improvement of interpolation rows, and the copy of a primary unknown's rows to the others.
#include <atomic>

#include "tier/setup/pwint_aa.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"

namespace tier {

namespace {

using outcome = weight_assembly::outcome;

enum class attempt { weights, no_weights, no_room };

/// The row of A with every F neighbour that has an interpolation replaced by it.
attempt improve(interpolation_row& row, int i, const weight_rows& old, double etr, truncation limits,
                bool all_c) {
  if (row.start(i, all_c) < 0) return attempt::no_room;
  const bool fits =
      row.for_fine_neighbours(true, [&](int j) { return !old.has(j) || row.eliminate_weights(j, old); });
  if (!fits) {
    row.abandon();
    return attempt::no_room;
  }
  const bool usable = row.finish(etr, limits) == interpolation_row::result::weights;
  return usable ? attempt::weights : attempt::no_weights;
}

}  // namespace

improvement_counts pwiter(level& lv, const interpolation_options& o, bool own_unknown, bool by_points) {
  const detached_weights detached(lv);
  const weight_rows old = detached.rows();
  std::atomic<int> by_sign = 0, all_connections = 0;
  weight_assembly rows(lv, couplings_of(lv, own_unknown), o, by_points);
  rows.run([&](interpolation_row& row, int i) {
    if (!old.has(i)) return outcome::empty;
    attempt result = improve(row, i, old, o.etr, o.limits, false);
    if (result == attempt::no_weights && o.limits == truncation::one_limit) {
      ++by_sign;
      result = improve(row, i, old, o.etr, truncation::limit_per_sign, false);
    }
    if (result == attempt::no_weights) {
      ++all_connections;
      result = improve(row, i, old, o.etr, o.limits, true);
    }
    if (result == attempt::no_weights) result = row.take(i, old) ? attempt::weights : attempt::no_room;
    return result == attempt::weights ? outcome::weights : outcome::no_room;
  });
  return {by_sign, all_connections};
}

void pwforce(level& lv, int nprim) {
  const detached_weights primary(lv);
  const weight_rows old = primary.rows();
  lv.iw.allocate(std::int64_t{lv.n} + 1, "iww", "pwforce");
  const auto primary_of = [&lv, nprim](int point) {
    for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i)
      if (lv.iu[i] == nprim) return i;
    return 0;
  };
  const auto at_point_of = [&lv](int column, int function) {
    for (int i = lv.iv[lv.ip[column]]; i < lv.iv[lv.ip[column] + 1]; ++i)
      if (lv.iu[i] == function) return i;
    return 0;
  };
  // Counts, then fills; a weight at a point without this unknown has no counterpart.
  for (const bool filling : {false, true}) {
    std::int64_t next = 1;
    for (int i = 1; i <= lv.n; ++i) {
      lv.iw[i] = static_cast<int>(next);
      const int source = lv.icg[i] > 0 ? i : primary_of(lv.ip[i]);
      if (source == 0 || lv.icg[i] == state_ff) continue;
      for (int p = old.iw[source]; p < old.iw[source + 1]; ++p) {
        const int column = at_point_of(old.jw[p], lv.iu[i]);
        if (column == 0) continue;
        if (filling) {
          lv.jw[next] = column;
          lv.w[next] = old.w[p];
        }
        ++next;
      }
    }
    if (!filling) require_countable(next - 1, "jww", "pwforce");
    lv.iw[lv.n + 1] = static_cast<int>(next);
    if (filling) return;
    lv.jw.allocate(next - 1, "jww", "pwforce");
    lv.w.allocate(next - 1, "ww", "pwforce");
  }
}

}  // namespace tier
