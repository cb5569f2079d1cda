// Reports of smoothed aggregation.
#include "tier/report/aggregation_report.h"

#include <algorithm>
#include <cinttypes>

#include "tier/store/print_line.h"

namespace tier {

namespace {

using aggregation::aggregation_hierarchy;
using aggregation::block_level;

/// body(number, level) for all levels.
template <class Body>
void for_levels(const aggregation_hierarchy& h, Body body) {
  body(1, h.fine);
  for (int k = 0; k < h.coarse.count(); ++k) body(k + 2, h.coarse[k]);
}

template <class T>
double entries_of(const block_level<T>& l) {
  return static_cast<double>(l.a.blocks()) * static_cast<double>(l.a.size_of_block());
}

}  // namespace

complexities measure(const aggregation_hierarchy& h, int entries) {
  complexities m;
  m.levels = h.present ? h.levels() : 0;
  if (m.levels == 0) return m;
  double n = 0, points = 0, all = 0, weights = 0, interpolated = 0;
  for_levels(h, [&](int k, const auto& l) {
    n += k == 1 ? h.points.rows : l.unknowns();
    points += l.a.n;
    all += k == 1 ? entries : entries_of(l);
    if (l.aggregates == 0) return;
    weights += static_cast<double>(l.p.blocks()) * static_cast<double>(l.p.size_of_block());
    interpolated += l.unknowns();
  });
  m.a_cmplx = all / entries;
  m.a_avrge = all / n;
  m.g_cmplx = n / h.points.rows;
  m.t_cmplx = (all + weights) / entries;
  m.w_avrge = interpolated > 0 ? weights / interpolated : 0.0;
  m.c_cmplx = m.a_cmplx;
  m.p_cmplx = points / h.points.points;
  m.e_cmplx = weights / entries;
  return m;
}

void print_aggregation(const aggregation_hierarchy& h, const controls& c) {
  if (c.dump_level < 1) return;
  print_line("Smoothed aggregation: %d points of up to %d variables, %d near-null vectors", h.points.points,
             h.points.block, h.modes);
  message(" level    variables      points      blocks  blocks a row  points an aggregate   strength  lambda",
          1);
  for_levels(h, [&](int k, const auto& l) {
    print_line("%6d %12d %11d %11d %13.2f %20.2f %10.4f %7.3f", k, l.unknowns(), l.a.n, l.a.blocks(),
               static_cast<double>(l.a.blocks()) / std::max(l.a.n, 1),
               l.aggregates > 0 ? static_cast<double>(l.a.n) / l.aggregates : 0.0, l.theta, l.lambda);
  });
  const complexities m = measure(h, c.nna);
  message("complexities and average row-lengths:", 1);
  print_line("a_cmplx:  %10.4f     a_avrge:  %10.4f", m.a_cmplx, m.a_avrge);
  print_line("g_cmplx:  %10.4f     t_cmplx:  %10.4f", m.g_cmplx, m.t_cmplx);
  print_line("w_avrge:  %10.4f     p_cmplx:  %10.4f", m.w_avrge, m.p_cmplx);
}

void print_aggregation_solver(const aggregation_hierarchy& h, const controls& c) {
  if (c.out_level < 1) return;
  constexpr const char* cycles[] = {"", "V", "W", "K"};
  message("AMG solver information", 1);
  print_line("Basic Method: Smoothed aggregation on %d levels (%s-cycle)", h.levels(),
             cycles[h.chosen.cycle]);
  print_line("Smoothing:  Chebyshev of degree %d, block-wise", h.chosen.degree);
  message("Acceleration: Flexible CG");
  print_line("Coarse level: size = %d, %s", h.coarse.empty() ? h.fine.unknowns() : h.coarse.back().unknowns(),
             h.last.present() ? "Direct solution by Cholesky (LAPACK)" : "Chebyshev smoothing");
}

void print_aggregation_restarts(const aggregation_hierarchy& h, const controls& c) {
  if (c.out_level < 0 || h.restarts == 0) return;
  print_line("restarts of CG with wider bounds:  %d", h.restarts);
}

}  // namespace tier
