// Gauss elimination for a point's block.
#include "tier/setup/dense_block.h"

#include <cmath>
#include <utility>

namespace tier {

namespace {

int pivot_row(const dense_block& d, int k) {
  int best = k;
  for (int r = k + 1; r < d.rows; ++r)
    if (std::abs(d(r, k)) > std::abs(d(best, k))) best = r;
  return best;
}

void exchange_rows(dense_block& b, int r, int s) {
  for (int c = 0; c < b.columns; ++c) std::swap(b(r, c), b(s, c));
}

}  // namespace

bool solve_from_left(dense_block& d, dense_block& x) {
  for (int k = 0; k < d.rows; ++k) {
    const int p = pivot_row(d, k);
    if (d(p, k) == 0.0) return false;
    if (p != k) {
      exchange_rows(d, p, k);
      exchange_rows(x, p, k);
    }
    for (int r = k + 1; r < d.rows; ++r) {
      const double factor = d(r, k) / d(k, k);
      for (int c = k; c < d.columns; ++c) d(r, c) -= factor * d(k, c);
      for (int c = 0; c < x.columns; ++c) x(r, c) -= factor * x(k, c);
    }
  }
  for (int k = d.rows - 1; k >= 0; --k) {
    for (int c = 0; c < x.columns; ++c) {
      for (int m = k + 1; m < d.rows; ++m) x(k, c) -= d(k, m) * x(m, c);
      x(k, c) /= d(k, k);
    }
  }
  return true;
}

void transpose(const dense_block& b, dense_block& t) {
  t.assign(b.columns, b.rows);
  for (int r = 0; r < b.rows; ++r)
    for (int c = 0; c < b.columns; ++c) t(c, r) = b(r, c);
}

}  // namespace tier
