// Vector kernels.
#include "tier/solve/vector_ops.h"

#include <cmath>

#include "tier/store/row_loop.h"

namespace tier {

void fill(int n, double value, vector x) {
  for_chunks(n, vector_team(n), [=](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) x[i] = value;
  });
}

void copy(int n, const_vector x, vector y) {
  for_chunks(n, vector_team(n), [=](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) y[i] = x[i];
  });
}

void scale(int n, double alpha, vector x) {
  for_chunks(n, vector_team(n), [=](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) x[i] *= alpha;
  });
}

void add_scaled(int n, double alpha, const_vector x, vector y) {
  for_chunks(n, vector_team(n), [=](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) y[i] += alpha * x[i];
  });
}

void scale_and_add(int n, double alpha, const_vector x, vector y) {
  for_chunks(n, vector_team(n), [=](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) y[i] = x[i] + alpha * y[i];
  });
}

void subtract(int n, const_vector x, const_vector y, vector z) {
  for_chunks(n, vector_team(n), [=](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) z[i] = x[i] - y[i];
  });
}

// Eight running sums: enough for the additions not to wait for each other.
double partial_dot(const double* x, const double* y, int n) {
  double s[8] = {};
  int i = 0;
  for (; i + 8 <= n; i += 8)
    for (int k = 0; k < 8; ++k) s[k] += x[i + k] * y[i + k];
  double rest = 0.0;
  for (; i < n; ++i) rest += x[i] * y[i];
  return ((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7])) + rest;
}

double dot(int n, const_vector x, const_vector y) {
  if (n == 0) return 0.0;
  return sum_chunks(n, vector_team(n), [=](const row_chunk& c) {
    return c.hi < c.lo ? 0.0 : partial_dot(&x[c.lo], &y[c.lo], c.hi - c.lo + 1);
  });
}

double length(int n, const_vector x) { return std::sqrt(dot(n, x, x)); }

}  // namespace tier
