// Block ILU(0) over the points of a level.
#include "tier/solve/block_ilu.h"

#include <algorithm>
#include <cmath>

namespace tier {

namespace {

constexpr const char* routine = "blk_alloc";

/// c <- c - a b for blocks by rows: a is m x k, b is k x n.
void subtract_product(int m, int k, int n, const double* a, const double* b, double* c) {
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < k; ++j) {
      const double x = a[i * k + j];
      for (int q = 0; q < n; ++q) c[i * n + q] -= x * b[j * n + q];
    }
}

}  // namespace

point_blocks::point_blocks(const level& l) {
  for (int i = 1; i <= l.n; ++i) points = std::max(points, l.ip[i]);
  start.allocate(points + 2, 0, "blk", routine);
  variable.allocate(l.n, "blk", routine);
  place.allocate(l.n, "blk", routine);
  for (int i = 1; i <= l.n; ++i) ++start[l.ip[i] + 1];
  start[1] = 1;
  for (int p = 1; p <= points; ++p) {
    largest = std::max(largest, start[p + 1]);
    start[p + 1] += start[p];
  }
  for (int i = l.n; i >= 1; --i) variable[--start[l.ip[i] + 1]] = i;
  for (int p = 1; p <= points; ++p) start[p] = start[p + 1];
  start[points + 1] = l.n + 1;
  for (int p = 1; p <= points; ++p)
    for (int q = start[p]; q < start[p + 1]; ++q) place[variable[q]] = q - start[p];
  system.allocate(std::int64_t{largest} * (largest + 1), "blk", routine);
  order.allocate(largest, "blk", routine);
}

bool solve_small(int m, double* a, double* b, int* order, bool full) {
  for (int j = 0; j < m; ++j) order[j] = j;
  for (int k = 0; k < m; ++k) {
    int row = k, column = k;
    for (int i = k; i < m; ++i)
      for (int j = k; j < (full ? m : k + 1); ++j)
        if (std::abs(a[i * m + j]) > std::abs(a[row * m + column])) {
          row = i;
          column = j;
        }
    if (a[row * m + column] == 0.0) return false;
    if (row != k) {
      std::swap_ranges(a + row * m, a + row * m + m, a + k * m);
      std::swap(b[row], b[k]);
    }
    if (column != k) {
      for (int i = 0; i < m; ++i) std::swap(a[i * m + column], a[i * m + k]);
      std::swap(order[column], order[k]);
    }
    for (int i = k + 1; i < m; ++i) {
      const double factor = a[i * m + k] / a[k * m + k];
      for (int j = k + 1; j < m; ++j) a[i * m + j] -= factor * a[k * m + j];
      b[i] -= factor * b[k];
    }
  }
  for (int k = m - 1; k >= 0; --k) {
    for (int j = k + 1; j < m; ++j) b[k] -= a[k * m + j] * b[j];
    b[k] /= a[k * m + k];
  }
  if (!full) return true;
  for (int k = 0; k < m; ++k)  // undo the column exchanges in place
    while (order[k] != k) {
      std::swap(b[k], b[order[k]]);
      std::swap(order[k], order[order[k]]);
    }
  return true;
}

void block_ilu::collect_pattern(const level& l) {
  const point_blocks& pts = *points_;
  work_array<int> seen;
  seen.allocate(pts.points, 0, "blk", routine);
  start_.allocate(pts.points + 1, "blk", routine);
  diagonal_.allocate(pts.points, "blk", routine);
  column_.allocate(l.entries(), "blk", routine);
  int top = 1;
  for (int p = 1; p <= pts.points; ++p) {
    start_[p] = top;
    for (int q = pts.start[p]; q < pts.start[p + 1]; ++q) {
      const int i = pts.variable[q];
      for (int k = l.ia[i]; k < l.ia[i + 1]; ++k) {
        const int other = l.ip[l.ja[k]];
        if (seen[other] == p) continue;
        seen[other] = p;
        column_[top++] = other;
      }
    }
    std::sort(column_.data() + start_[p] - 1, column_.data() + top - 1);
    start_[p + 1] = top;
    diagonal_[p] = find(p, p);
  }
}

int block_ilu::find(int row, int column) const {
  const int* first = column_.data() + start_[row] - 1;
  const int* end = column_.data() + start_[row + 1] - 1;
  const int* at = std::lower_bound(first, end, column);
  return at != end && *at == column ? static_cast<int>(at - column_.data()) + 1 : 0;
}

void block_ilu::collect_values(const level& l) {
  const point_blocks& pts = *points_;
  const int blocks = start_[pts.points + 1] - 1;
  at_.allocate(blocks + 1, "blk", routine);
  std::int64_t top = 1;
  for (int p = 1; p <= pts.points; ++p)
    for (int q = start_[p]; q < start_[p + 1]; ++q) {
      at_[q] = top;
      top += std::int64_t{pts.size_of(p)} * pts.size_of(column_[q]);
    }
  value_.allocate(top - 1, 0.0, "blk", routine);
  for (int p = 1; p <= pts.points; ++p)
    for (int q = pts.start[p]; q < pts.start[p + 1]; ++q) {
      const int i = pts.variable[q];
      for (int k = l.ia[i]; k < l.ia[i + 1]; ++k) {
        const int j = l.ja[k], other = l.ip[j];
        block(find(p, other))[(q - pts.start[p]) * pts.size_of(other) + pts.place[j]] += l.a[k];
      }
    }
}

/// The inverse of the diagonal block in its place, column by column.
bool block_ilu::invert_diagonal(int p) {
  const int m = points_->size_of(p);
  double* d = block(diagonal_[p]);
  double* copy_of = small_.data();
  double* inverse = copy_of + std::int64_t{m} * m;
  double* column = inverse + std::int64_t{m} * m;
  for (int c = 0; c < m; ++c) {
    std::copy_n(d, m * m, copy_of);
    for (int i = 0; i < m; ++i) column[i] = i == c ? 1.0 : 0.0;
    if (!solve_small(m, copy_of, column, order_.data(), true)) return false;
    for (int i = 0; i < m; ++i) inverse[i * m + c] = column[i];
  }
  std::copy_n(inverse, m * m, d);
  return true;
}

bool block_ilu::factorise_row(int p, bool modified, double weight) {
  const point_blocks& pts = *points_;
  const int m = pts.size_of(p);
  for (int q = start_[p]; q < start_[p + 1] && column_[q] < p; ++q) {
    const int k = column_[q], mk = pts.size_of(k);
    double* l_block = block(q);
    double* product = small_.data();
    std::fill_n(product, m * mk, 0.0);
    subtract_product(m, mk, mk, l_block, block(diagonal_[k]), product);
    for (int e = 0; e < m * mk; ++e) l_block[e] = -product[e];
    for (int u = diagonal_[k] + 1; u < start_[k + 1]; ++u) {
      const int j = column_[u], mj = pts.size_of(j), place = find(p, j);
      if (place != 0) {
        subtract_product(m, mk, mj, l_block, block(u), block(place));
      } else if (modified) {
        std::fill_n(product, m * mj, 0.0);
        subtract_product(m, mk, mj, l_block, block(u), product);
        for (int i = 0; i < m; ++i)
          for (int c = 0; c < mj; ++c) block(diagonal_[p])[i * m + i] += weight * product[i * mj + c];
      }
    }
  }
  return invert_diagonal(p);
}

bool block_ilu::decompose(const level& l, const point_blocks& points, bool modified, double weight) {
  points_ = &points;
  modified_ = modified;
  weight_ = weight;
  collect_pattern(l);
  collect_values(l);
  small_.allocate(2 * std::int64_t{points.largest} * points.largest + points.largest, "blk", routine);
  order_.allocate(points.largest, "blk", routine);
  x_.allocate(l.n, "blk", routine);
  for (int p = 1; p <= points.points; ++p)
    if (points.size_of(p) > 0 && !factorise_row(p, modified, weight)) return false;
  return true;
}

void block_ilu::solve(const_vector v, vector z) {
  const point_blocks& pts = *points_;
  for (int p = 1; p <= pts.points; ++p) {
    const int m = pts.size_of(p), first = pts.start[p];
    double* x = &x_[first];
    for (int i = 0; i < m; ++i) x[i] = v[pts.variable[first + i]];
    for (int q = start_[p]; q < start_[p + 1] && column_[q] < p; ++q)
      subtract_product(m, pts.size_of(column_[q]), 1, block(q), &x_[pts.start[column_[q]]], x);
  }
  for (int p = pts.points; p >= 1; --p) {
    const int m = pts.size_of(p), first = pts.start[p];
    if (m == 0) continue;
    double* x = &x_[first];
    for (int q = diagonal_[p] + 1; q < start_[p + 1]; ++q)
      subtract_product(m, pts.size_of(column_[q]), 1, block(q), &x_[pts.start[column_[q]]], x);
    double* product = small_.data();
    std::fill_n(product, m, 0.0);
    subtract_product(m, m, 1, block(diagonal_[p]), x, product);
    for (int i = 0; i < m; ++i) x[i] = -product[i];
  }
  for (int q = 1; q <= pts.start[pts.points + 1] - 1; ++q) z[pts.variable[q]] = x_[q];
}

}  // namespace tier
