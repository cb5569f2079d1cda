// Matrix kernels on one level.
#include "tier/solve/matrix_ops.h"

#include "tier/store/row_loop.h"

namespace tier {

void multiply(const level& l, const_vector x, vector y) {
  for_chunks(l.n, matrix_team(l.n), [&l, x, y](const row_chunk& c) {
    for_row_products(l, c, x.data(), [y](int i, double product) { y[i] = product; });
  });
}

double multiply_and_dot(const level& l, const_vector x, vector y, const_vector v) {
  return sum_chunks(l.n, matrix_team(l.n), [&l, x, y, v](const row_chunk& c) {
    double s = 0.0;
    for_row_products(l, c, x.data(), [&s, y, v](int i, double product) {
      y[i] = product;
      s += product * v[i];
    });
    return s;
  });
}

void residual(const level& l, const_vector f, const_vector u, vector r) {
  for_chunks(l.n, matrix_team(l.n), [&l, f, u, r](const row_chunk& c) {
    for_row_products(l, c, u.data(), [f, r](int i, double product) { r[i] = f[i] - product; });
  });
}

}  // namespace tier
