// Matrix kernels on one level: products and residuals by row chunks.
// Called by the driver, the transfers, the accelerators and the iterative coarsest-level solvers.
#pragma once

#include <cstdint>

#include "tier/frame/hierarchy.h"
#include "tier/solve/vector_ops.h"

namespace tier {

/// sum of a_k u(ja_k) over `count` entries; u1 is the address of u(1). Four running sums hide the latency of
/// the additions; the order is fixed, so a row gives the same bits in every loop.
inline double row_sum(const int* ja, const double* a, const double* u1, std::int64_t count) {
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
  std::int64_t k = 0;
  for (; k + 4 <= count; k += 4) {
    s0 += a[k] * u1[ja[k] - 1];
    s1 += a[k + 1] * u1[ja[k + 1] - 1];
    s2 += a[k + 2] * u1[ja[k + 2] - 1];
    s3 += a[k + 3] * u1[ja[k + 3] - 1];
  }
  for (; k < count; ++k) s0 += a[k] * u1[ja[k] - 1];
  return (s0 + s1) + (s2 + s3);
}

/// Row i of A times u.
inline double row_product(const level& l, int i, const double* u1) {
  const int first = l.ia[i];
  return row_sum(&l.ja[first], &l.a[first], u1, l.ia[i + 1] - first);
}

/// y <- A x
void multiply(const level& l, const_vector x, vector y);

/// y <- A x, returns (y, v).
double multiply_and_dot(const level& l, const_vector x, vector y, const_vector v);

/// r <- f - A u
void residual(const level& l, const_vector f, const_vector u, vector r);

}  // namespace tier
