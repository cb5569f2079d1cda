// Sparse Gauss elimination with a dense last block.
#include "tier/solve/sparse_gauss.h"

#include <algorithm>
#include <cmath>

#include "tier/solve/lapack.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/min_degree.h"

namespace tier {

namespace {

constexpr const char* routine = "spg_alloc";

}  // namespace

void sparse_gauss::analyse(int n, view<const int> ia, view<const int> ja) {
  n_ = n;
  minimum_degree_order(n, ia, ja, order_, below_);
  choose_dense_block();
  step_of_column_.allocate(n, "spg", routine);
  column_of_step_.allocate(n, "spg", routine);
  lp_.allocate(n + 1, "lp", routine);
  up_.allocate(n + 1, "up", routine);
  pivot_.allocate(n, "pivot", routine);
  x_.allocate(n, 0.0, "x", routine);
  for (work_array<int>* w : {&mark_, &stack_, &place_, &path_}) w->allocate(n, 0, "spg", routine);
}

// Cost of making the factor once and using it for a hundred cycles, in nanoseconds of an ordinary machine: a
// sparse entry costs about one per operation and is 12 bytes, a dense one a fifteenth of that and 8 bytes.
void sparse_gauss::choose_dense_block() {
  constexpr double uses = 100.0, sparse_operation = 1.0, dense_operation = 0.07;
  constexpr double sparse_entry = 2.0 * 1.5, dense_entry = 1.0;
  const auto block_cost = [](double m) {
    return 2.0 / 3.0 * m * m * m * dense_operation + uses * m * m * dense_entry;
  };
  double best = block_cost(n_), before = 0.0;
  block_ = 1;
  for (int k = 1; k <= n_; ++k) {
    const double d = below_[k];
    before += 2.0 * d * d * sparse_operation + uses * (d + 1.0) * sparse_entry;
    const double cost = before + block_cost(n_ - k);
    if (cost < best) {
      best = cost;
      block_ = k + 1;
    }
  }
  estimated_l_ = 0;
  for (int k = 1; k < block_; ++k) estimated_l_ += below_[k];
  estimated_u_ = estimated_l_;
}

// Search from `from` along the columns of L that are known; columns of A are left
// on the stack, deepest last, in place_[top..n].
void sparse_gauss::depth_first(int from, int& top) {
  int depth = 1;
  stack_[1] = from;
  while (depth > 0) {
    const int j = stack_[depth];
    const int step = step_of_column_[j];
    if (mark_[j] == 0) {
      mark_[j] = 1;
      path_[depth] = step > 0 ? lp_[step] : 0;
    }
    bool deeper = false;
    const int end = step > 0 ? lp_[step + 1] : 0;
    while (path_[depth] < end) {
      const int next = li_[path_[depth]++];
      if (mark_[next] != 0) continue;
      stack_[++depth] = next;
      deeper = true;
      break;
    }
    if (deeper) continue;
    place_[top--] = j;
    --depth;
  }
}

int sparse_gauss::reach(int row, view<const int> ia, view<const int> ja, bool pinned_row) {
  int top = n_;
  const int end = pinned_row ? ia[row] + 1 : ia[row + 1];
  for (int k = ia[row]; k < end; ++k)
    if (mark_[ja[k]] == 0) depth_first(ja[k], top);
  return top + 1;
}

int sparse_gauss::factorise(view<const int> ia, view<const int> ja, view<const double> a,
                            view<const int> pinned, double stability, std::int64_t licn, std::int64_t lirn) {
  const int n = n_, m = n - block_ + 1;
  li_.allocate(licn, "li", routine);
  lx_.allocate(licn, "lx", routine);
  ui_.allocate(lirn, "ui", routine);
  ux_.allocate(lirn, "ux", routine);
  dense_.allocate(static_cast<std::int64_t>(m) * m, 0.0, "dense", routine);
  swaps_.allocate(m, "swaps", routine);
  for (int j = 1; j <= n; ++j) {
    step_of_column_[j] = 0;
    mark_[j] = 0;
    x_[j] = 0.0;
  }
  l_top_ = u_top_ = needed_ = 0;
  for (int k = 1; k <= n; ++k) {
    lp_[k] = static_cast<int>(l_top_) + 1;
    up_[k] = static_cast<int>(u_top_) + 1;
    const int row = order_[k];
    const bool pin = pinned && pinned[row] != 0;
    if (k == block_)  // the columns that are left become the block's, in their natural order
      for (int j = 1, to = k; j <= n; ++j)
        if (step_of_column_[j] == 0) {
          column_of_step_[to] = j;
          step_of_column_[j] = -to++;
        }
    const int top = reach(row, ia, ja, pin);
    const int end = pin ? ia[row] + 1 : ia[row + 1];
    for (int p = ia[row]; p < end; ++p) x_[ja[p]] += a[p];
    for (int p = top; p <= n; ++p) {
      const int j = place_[p], step = step_of_column_[j];
      if (step <= 0) continue;
      const double value = x_[j];
      for (int q = lp_[step]; q < lp_[step + 1]; ++q) x_[li_[q]] -= lx_[q] * value;
    }
    const int outcome = take_column(k, top, stability, licn, lirn);
    if (outcome != done) return outcome;
  }
  lp_[n + 1] = static_cast<int>(l_top_) + 1;
  up_[n + 1] = static_cast<int>(u_top_) + 1;
  const int outcome = factorise_block();
  if (outcome == done) finish_numbering();
  return outcome;
}

// Sorts the finished work row into U, the block, or a new pivot and L. A column keeps no explicit zeros out
// of the pattern: the next search relies on the pattern alone.
int sparse_gauss::take_column(int k, int top, double stability, std::int64_t licn, std::int64_t lirn) {
  const int n = n_, m = n - block_ + 1;
  int pivot = 0;
  double largest = 0.0;
  for (int p = top; p <= n; ++p) {
    const int j = place_[p], step = step_of_column_[j];
    mark_[j] = 0;
    if (step > 0) {
      if (u_top_ == lirn) {
        needed_ = u_top_ + (n - p + 1);
        return out_of_u;
      }
      ui_[++u_top_] = step;
      ux_[u_top_] = x_[j];
      x_[j] = 0.0;
    } else if (step < 0) {
      dense_[static_cast<std::int64_t>(k - block_) * m + (-step - block_) + 1] = x_[j];
      x_[j] = 0.0;
    } else if (!(std::abs(x_[j]) <= largest)) {
      largest = std::abs(x_[j]);
      pivot = j;
    }
  }
  if (k >= block_) return done;
  if (!(largest > 0.0) || !std::isfinite(largest)) return singular;
  const int own = order_[k];
  if (step_of_column_[own] == 0 && x_[own] != 0.0 && std::abs(x_[own]) >= stability * largest) pivot = own;
  pivot_[k] = x_[pivot];
  for (int p = top; p <= n; ++p) {
    const int j = place_[p];
    if (step_of_column_[j] != 0 || j == pivot) continue;
    if (l_top_ == licn) {
      needed_ = l_top_ + (n - p + 1);
      return out_of_l;
    }
    li_[++l_top_] = j;
    lx_[l_top_] = x_[j] / pivot_[k];
    x_[j] = 0.0;
  }
  x_[pivot] = 0.0;
  step_of_column_[pivot] = k;
  column_of_step_[k] = pivot;
  lp_[k + 1] = static_cast<int>(l_top_) + 1;
  return done;
}

int sparse_gauss::factorise_block() {
  const int m = n_ - block_ + 1;
  if (m == 0) return done;
  int info = 0;
  dgetrf_(&m, &m, dense_.data(), &m, swaps_.data(), &info);
  if (info != 0) return singular;
  const double last = dense_[static_cast<std::int64_t>(m) * m];
  return std::isfinite(last) ? done : singular;
}

// L's rows are columns of A until all steps are known.
void sparse_gauss::finish_numbering() {
  for (int k = 1; k <= n_; ++k) step_of_column_[column_of_step_[k]] = k;
  for (std::int64_t p = 1; p <= l_top_; ++p) li_[p] = step_of_column_[li_[p]];
}

// A = U^T L^T with rows and columns in the order of the steps.
void sparse_gauss::substitute(view<const double> f, view<double> u) {
  double* x = x_.data();
  const int n = n_, m = n - block_ + 1;
  const auto sum = [x](const work_array<int>& index, const work_array<double>& value, int first, int end) {
    return row_sum(index.data() + (first - 1), value.data() + (first - 1), x, end - first);
  };
  for (int k = 1; k < block_; ++k) x[k - 1] = (f[order_[k]] - sum(ui_, ux_, up_[k], up_[k + 1])) / pivot_[k];
  double* y = x + block_ - 1;
  for (int k = 0; k < m; ++k) {
    const double* column = dense_.data() + static_cast<std::int64_t>(k) * m;
    const int step = block_ + k;
    const double s = f[order_[step]] - sum(ui_, ux_, up_[step], up_[step + 1]);
    y[k] = (s - partial_dot(column, y, k)) / column[k];
  }
  for (int k = m - 1; k >= 0; --k) {
    const double* column = dense_.data() + static_cast<std::int64_t>(k) * m;
    y[k] -= partial_dot(column + k + 1, y + k + 1, m - 1 - k);
  }
  for (int k = m; k >= 1; --k) std::swap(y[k - 1], y[swaps_[k] - 1]);
  for (int k = block_ - 1; k >= 1; --k) x[k - 1] -= sum(li_, lx_, lp_[k], lp_[k + 1]);
  for (int k = 1; k <= n; ++k) u[column_of_step_[k]] = x[k - 1];
}

}  // namespace tier
