// Orthogonalisation and linear combinations of Krylov columns.
#include "tier/solve/gmres_kernels.h"

#include <array>

#include "tier/solve/row_loop.h"

namespace tier {

namespace {

/// w <- w - h v, returns (w, next) of the new w.
double update_and_dot(double* w, const double* v, double h, const double* next, int n) {
  double s = 0.0;
#pragma omp simd reduction(+ : s)
  for (int i = 0; i < n; ++i) {
    const double x = w[i] - h * v[i];
    w[i] = x;
    s += x * next[i];
  }
  return s;
}

double update_and_square(double* w, const double* v, double h, int n) {
  double s = 0.0;
#pragma omp simd reduction(+ : s)
  for (int i = 0; i < n; ++i) {
    const double x = w[i] - h * v[i];
    w[i] = x;
    s += x * x;
  }
  return s;
}

}  // namespace

double orthogonalise(int n, int j, krylov_block& v, view<double> h, view<double> w) {
  std::array<thread_parts, 2> parts;  // in turn, so that a fast thread does not overwrite what others read
  double square = 0.0;
  for_chunks(n, vector_team(n), [&](const row_chunk& c) {
    const int rows = c.hi - c.lo + 1;
    double* own = &w[c.lo];
    double coefficient = h[1];
    for (int i = 1; i <= j; ++i) {
      const double* vi = &v(i)[c.lo];
      const double part = i < j ? update_and_dot(own, vi, coefficient, &v(i + 1)[c.lo], rows)
                                : update_and_square(own, vi, coefficient, rows);
      thread_parts& sums = parts[static_cast<std::size_t>(i % 2)];
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
