// V-, W- and K-cycles.
#include "tier/aggregation/block_cycle.h"

#include <algorithm>
#include <cmath>

#include "tier/aggregation/chebyshev.h"
#include "tier/aggregation/vector_sums.h"
#include "tier/store/row_loop.h"
#include "tier/store/timers.h"

namespace tier::aggregation {

namespace {

template <class T>
polynomial smoother_of(const aggregation_hierarchy& h, const block_level<T>& l) {
  constexpr double share = 20.0;  // of the spectrum, from above, is the smoother's part
  const double high = h.chosen.safety * h.widening * l.lambda;
  return {h.chosen.degree, high / share, high};
}

/// x from f by smoothing and the next level, k + 1.
template <class T>
void cycle(aggregation_hierarchy& h, block_level<T>& l, int k) {
  const polynomial p = smoother_of(h, l);
  smooth_from_zero(l, p);
  block_level<double>& next = h.coarse[k - 1];
  residual(l.a, l.f.data(), l.x.data(), l.d.data());
  restrict_to(l.p, l.index, next.a.n, l.d.data(), next.f.data());
  solve_coarse(h, k + 1);
  prolong(l.p, next.x.data(), l.x.data());
  smooth(l, p);
}

/// A last level that is too large for a dense factor: a polynomial over a longer interval.
template <class T>
void smooth_alone(const aggregation_hierarchy& h, block_level<T>& l) {
  polynomial p = smoother_of(h, l);
  p.degree = 8;
  p.low = p.high / 100.0;
  smooth_from_zero(l, p);
}

void solve_last(aggregation_hierarchy& h, block_level<double>& l) {
  if (!h.last.present()) return smooth_alone(h, l);
  std::copy_n(l.f.data(), l.unknowns(), l.x.data());
  h.last.solve(l.x.data());
}

/// Cycle from the residual f - A x; x becomes the sum.
void second_cycle(aggregation_hierarchy& h, block_level<double>& l, int k) {
  l.direction.swap(l.x);
  residual(l.a, l.f.data(), l.direction.data(), l.product.data());
  l.f.swap(l.product);
  cycle(h, l, k);
  add_multiple(l.unknowns(), 1.0, l.direction.data(), l.x.data());
}

void scale_to(int n, double alpha, const double* from, double* to) {
  for (int i = 0; i < n; ++i) to[i] = alpha * from[i];
}

/// Two steps of flexible CG with directions c = B f and d = B (f - alpha A c). A step without positive energy
/// is left out.
void krylov_steps(aggregation_hierarchy& h, block_level<double>& l, int k) {
  constexpr double reduced = 0.25;
  const int n = l.unknowns();
  double* const c = l.direction.data();
  double* const ac = l.product.data();
  std::copy_n(l.x.data(), n, c);
  multiply(l.a, c, ac);
  const double energy = dot(n, c, ac), along = dot(n, c, l.f.data()), before = dot(n, l.f.data(), l.f.data());
  if (!(energy > 0.0)) return;
  const double first = along / energy;
  add_multiple(n, -first, ac, l.f.data());
  if (dot(n, l.f.data(), l.f.data()) <= reduced * reduced * before) return scale_to(n, first, c, l.x.data());
  cycle(h, l, k);
  multiply(l.a, l.x.data(), l.y.data());
  const double mixed = dot(n, l.x.data(), ac), own = dot(n, l.x.data(), l.y.data()),
               along_second = dot(n, l.x.data(), l.f.data());
  const double left = own - mixed * mixed / energy;
  if (!(left > 0.0)) return scale_to(n, first, c, l.x.data());
  const double second = along_second / left;
  add_to_multiple(n, second, c, l.x.data());  // c + second d, then the rest of c
  add_multiple(n, first - second * mixed / energy - 1.0, c, l.x.data());
}

void gather(aggregation_hierarchy& h, const double* r, double factor) {
  const int* const place = h.points.place.data();
  float* const f = h.fine.f.data();
  for_chunks(h.points.rows, vector_team(h.points.rows), [=](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i) f[place[i]] = static_cast<float>(factor * r[i]);
  });
}

void scatter(const aggregation_hierarchy& h, double factor, double* z) {
  const int* const place = h.points.place.data();
  const float* const x = h.fine.x.data();
  for_chunks(h.points.rows, vector_team(h.points.rows), [=](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i) z[i] = factor * x[place[i]];
  });
}

/// One level alone: the dense factor in double.
void solve_single_level(aggregation_hierarchy& h, const double* r, double* z) {
  double* const x = h.last_vector.data();
  std::fill_n(x, h.last_vector.size(), 0.0);
  for (int i = 0; i < h.points.rows; ++i) x[h.points.place[i]] = r[i];
  h.last.solve(x);
  for (int i = 0; i < h.points.rows; ++i) z[i] = x[h.points.place[i]];
}

}  // namespace

void solve_coarse(aggregation_hierarchy& h, int k) {
  block_level<double>& l = h.coarse[k - 2];
  if (k == h.levels()) {
    const timed time(phase::coarsest_solution);
    return solve_last(h, l);
  }
  cycle(h, l, k);
  if (h.chosen.cycle == w_cycle) second_cycle(h, l, k);
  if (h.chosen.cycle == k_cycle) krylov_steps(h, l, k);
}

// Residuals of any size fit into single precision after division by their length.
void precondition(aggregation_hierarchy& h, const double* r, double* z) {
  if (h.levels() == 1 && h.last.present()) return solve_single_level(h, r, z);
  const double length = std::sqrt(dot(h.points.rows, r, r));
  const double factor = length > 0.0 ? std::sqrt(static_cast<double>(h.points.rows)) / length : 1.0;
  gather(h, r, factor);
  if (h.levels() == 1)
    smooth_alone(h, h.fine);
  else
    cycle(h, h.fine, 1);
  scatter(h, 1.0 / factor, z);
}

}  // namespace tier::aggregation
