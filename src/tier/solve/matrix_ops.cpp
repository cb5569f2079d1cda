// Matrix kernels on one level.
#include "tier/solve/matrix_ops.h"

#include "tier/solve/row_loop.h"

namespace tier {

void multiply(const level& l, const_vector x, vector y) {
  for_chunks(l.n, matrix_team(l.n), [&l, x, y](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) y[i] = row_product(l, i, x.data());
  });
}

double multiply_and_dot(const level& l, const_vector x, vector y, const_vector v) {
  return sum_chunks(l.n, matrix_team(l.n), [&l, x, y, v](const row_chunk& c) {
    double s = 0.0;
    for (int i = c.lo; i <= c.hi; ++i) {
      const double p = row_product(l, i, x.data());
      y[i] = p;
      s += p * v[i];
    }
    return s;
  });
}

void residual(const level& l, const_vector f, const_vector u, vector r) {
  for_chunks(l.n, matrix_team(l.n), [&l, f, u, r](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) r[i] = f[i] - row_product(l, i, u.data());
  });
}

}  // namespace tier
