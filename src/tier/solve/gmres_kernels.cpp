// Orthogonalisation and linear combinations of Krylov columns.
#include "tier/solve/gmres_kernels.h"

#include "tier/store/numbered.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

/// w <- w - h v, returns (w, next) of the new w; without `next` (w, w). Eight running sums.
template <bool Square>
double update_and_dot(double* __restrict w, const double* __restrict v, double h,
                      const double* __restrict next, int n) {
  double s[8] = {};
  const auto update = [=](int i) { return w[i] = w[i] - h * v[i]; };
  int i = 0;
  for (; i + 8 <= n; i += 8)
    for (int k = 0; k < 8; ++k) {
      const double x = update(i + k);
      s[k] += x * (Square ? x : next[i + k]);
    }
  double rest = 0.0;
  for (; i < n; ++i) {
    const double x = update(i);
    rest += x * (Square ? x : next[i]);
  }
  return ((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7])) + rest;
}

}  // namespace

double orthogonalise(int n, int j, krylov_block& v, view<double> h, view<double> w) {
  numbered<thread_parts, 2> parts;  // in turn, so that a fast thread does not overwrite what others read
  double square = 0.0;
  for_chunks(n, vector_team(n), [&](const row_chunk& c) {
    const int rows = c.hi - c.lo + 1;
    double* own = &w[c.lo];
    double coefficient = h[1];
    for (int i = 1; i <= j; ++i) {
      const double* vi = &v(i)[c.lo];
      const double part = i < j ? update_and_dot<false>(own, vi, coefficient, &v(i + 1)[c.lo], rows)
                                : update_and_dot<true>(own, vi, coefficient, nullptr, rows);
      thread_parts& sums = parts[i % 2];
      sums.put(c.tid, part);
      team_barrier(c);
      coefficient = sums.sum(c.team);
      if (c.tid == 0) (i < j ? h[i + 1] : square) = coefficient;
    }
  });
  return square;
}

void add_combination(int n, int j, krylov_block& z, view<const double> y, view<double> u) {
  for_chunks(n, vector_team(n), [&](const row_chunk& c) {
    const int rows = c.hi - c.lo + 1;
    double* x = &u[c.lo];
    int k = 1;
    for (; k + 3 <= j; k += 4) {
      const double *z0 = &z(k)[c.lo], *z1 = &z(k + 1)[c.lo], *z2 = &z(k + 2)[c.lo], *z3 = &z(k + 3)[c.lo];
      const double y0 = y[k], y1 = y[k + 1], y2 = y[k + 2], y3 = y[k + 3];
#pragma omp simd
      for (int i = 0; i < rows; ++i) x[i] += (y0 * z0[i] + y1 * z1[i]) + (y2 * z2[i] + y3 * z3[i]);
    }
    for (; k <= j; ++k) {
      const double* zk = &z(k)[c.lo];
#pragma omp simd
      for (int i = 0; i < rows; ++i) x[i] += y[k] * zk[i];
    }
  });
}

}  // namespace tier
