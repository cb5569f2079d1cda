// Complexities of a hierarchy, and megabytes in use.
#include "tier/store/results_of_run.h"

#include <algorithm>

#include "tier/store/work_arrays.h"

namespace tier {

const per_context<call_figures> last_call;

namespace {

constexpr double megabytes_per_integer = 3.814697265625e-06, megabytes_per_real = 7.62939453125e-06;

double ratio(double part, double whole) { return whole > 0.0 ? part / whole : 0.0; }

/// Visits of level k in one cycle: V 1, F k, W 2^(k-1), VV two on coarse levels.
double visits(cycle_kind igam, int k) {
  if (igam == cycle_kind::f) return k;
  if (igam == cycle_kind::w) return static_cast<double>(1 << std::min(k - 1, 30));
  if (igam == cycle_kind::vv) return k == 1 ? 1.0 : 2.0;
  return 1.0;
}

}  // namespace

complexities measure(const hierarchy& h, const controls& c) {
  complexities m;
  m.levels = h.levels_created;
  if (m.levels < 1) return m;
  double n = 0, points = 0, entries = 0, weights = 0, primary = 0, primary_rows = 0, visited = 0,
         interpolated = 0;
  for (int k = 1; k <= m.levels; ++k) {
    const level& l = h(k);
    n += l.n;
    points += l.npnts;
    entries += l.entries();
    visited += visits(c.igam, k) * l.entries();
    primary += static_cast<double>(l.primary_entries);
    primary_rows += static_cast<double>(l.primary_rows);
    if (k == m.levels) continue;
    weights += static_cast<double>(l.w.size());
    interpolated += l.n;
  }
  const double n1 = h(1).n, entries1 = h(1).entries(), points1 = h(1).npnts;
  m.a_cmplx = ratio(entries, entries1);
  m.a_avrge = ratio(entries, n);
  m.b_cmplx = ratio(primary, static_cast<double>(h(1).primary_entries));
  m.b_avrge = ratio(primary, primary_rows);
  m.ib_cmplx = ratio(primary_rows, points1);
  m.g_cmplx = ratio(n, n1);
  m.t_cmplx = ratio(entries + weights, entries1);
  m.w_avrge = ratio(weights, interpolated);
  m.c_cmplx = ratio(visited, entries1);
  m.p_cmplx = ratio(points, points1);
  m.e_cmplx = ratio(weights, entries1);
  return m;
}

double megabytes_of_integers(double count) { return count * megabytes_per_integer; }
double megabytes_of_reals(double count) { return count * megabytes_per_real; }

double megabytes_in_use() {
  return megabytes_of_integers(static_cast<double>(memory().nisum)) +
         megabytes_of_reals(static_cast<double>(memory().ndsum));
}

}  // namespace tier
