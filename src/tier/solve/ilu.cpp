// Incomplete LU factors by rows.
#include "tier/solve/ilu.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "tier/store/input_checks.h"

namespace tier {

namespace {

constexpr const char* routine = "ilu_alloc";
constexpr double pivot_tolerance = 0.5;  // a column is exchanged when its entry is over twice the diagonal's

bool usable(double pivot) { return pivot != 0.0 && std::isfinite(pivot); }

}  // namespace

void ilu_factors::triangle::allocate(int n, std::int64_t room) {
  start.allocate(n + 1, "ilu", routine);
  column.allocate(room, "ilu", routine);
  value.allocate(room, "ilu", routine);
  top = 0;
}

void ilu_factors::triangle::append(int j, double x) {
  if (top == column.size()) {
    const std::int64_t room = 2 * top + 16;
    column.resize(room, "ilu", routine);
    value.resize(room, "ilu", routine);
  }
  column[++top] = j;
  value[top] = x;
}

bool ilu_factors::decompose(const level& l, const ilu_options& options) {
  n_ = l.n;
  options_ = options;
  const bool fixed = options.kind == ilu_kind::zero_fill;
  const std::int64_t entries = l.entries(), fill = std::min<std::int64_t>(options.lfil, n_) * n_;
  lower_.allocate(n_, fixed ? entries : std::min(fill, 4 * entries));
  upper_.allocate(n_, fixed ? entries : std::min(fill, 4 * entries));
  inverse_.allocate(n_, "ilu", routine);
  row_.allocate(n_, 0.0, "ilu", routine);
  x_.allocate(n_, "ilu", routine);
  in_row_.allocate(n_, 0, "ilu", routine);
  below_.allocate(n_, "ilu", routine);
  finished_.allocate(n_, "ilu", routine);
  above_.allocate(n_, "ilu", routine);
  column_at_.allocate(n_, "ilu", routine);
  position_of_.allocate(n_, "ilu", routine);
  for (int j = 1; j <= n_; ++j) column_at_[j] = position_of_[j] = j;
  const bool good = fixed ? zero_fill(l) : threshold(l);
  for (work_array<int>* w : {&in_row_, &below_, &above_, &finished_}) w->release();
  row_.release();
  if (options.kind == ilu_kind::threshold_pivoting)  // columns to their final positions
    for (std::int64_t p = 1; p <= upper_.top; ++p) upper_.column[p] = position_of_[upper_.column[p]];
  return good;
}

void ilu_factors::put(int j, double x) {
  row_[j] = x;
  in_row_[j] = 1;
}

// The matrix row in the work row. Lists are of positions left (below_) and right (above_) of the diagonal.
void ilu_factors::load_row(const level& l, int i) {
  count_below_ = count_above_ = 0;
  dropped_ = 0.0;
  put(i, 0.0);
  for (int p = l.ia[i]; p < l.ia[i + 1]; ++p) {
    const int j = position_of_[l.ja[p]];
    if (in_row_[j] == 0) {
      put(j, 0.0);
      if (j < i)
        below_[++count_below_] = j;
      else
        above_[++count_above_] = j;
    }
    row_[j] += l.a[p];
  }
}

bool ilu_factors::zero_fill(const level& l) {
  for (int i = 1; i <= n_; ++i) {
    load_row(l, i);
    std::sort(below_.data(), below_.data() + count_below_);
    std::sort(above_.data(), above_.data() + count_above_);
    lower_.start[i] = static_cast<int>(lower_.top) + 1;
    upper_.start[i] = static_cast<int>(upper_.top) + 1;
    for (int m = 1; m <= count_below_; ++m) {
      const int k = below_[m];
      const double factor = row_[k] * inverse_[k];
      row_[k] = factor;
      for (int p = upper_.start[k]; p < upper_.start[k + 1]; ++p) {
        const int j = upper_.column[p];
        if (in_row_[j] != 0)
          row_[j] -= factor * upper_.value[p];
        else
          dropped_ -= factor * upper_.value[p];
      }
    }
    if (!append_row(i)) return false;
  }
  return true;
}

// Multipliers in ascending order of their column; fill from each joins the lists. Small multipliers go.
void ilu_factors::eliminate(int i, double tolerance) {
  int* heap = below_.data();
  const auto later = std::greater<int>();
  std::make_heap(heap, heap + count_below_, later);
  int waiting = count_below_, kept = 0;
  while (waiting > 0) {
    std::pop_heap(heap, heap + waiting, later);
    const int k = heap[--waiting];
    if (!(std::abs(row_[k]) > tolerance)) {  // in the row's own units, as the tolerance is
      dropped_ += row_[k];
      in_row_[k] = 0;
      continue;
    }
    const double factor = row_[k] * inverse_[k];
    row_[k] = factor;
    finished_[++kept] = k;  // not in below_, whose place the heap needs
    for (int p = upper_.start[k]; p < upper_.start[k + 1]; ++p) {
      const int j = position_of_[upper_.column[p]];
      const double change = factor * upper_.value[p];
      if (in_row_[j] != 0) {
        row_[j] -= change;
        continue;
      }
      put(j, -change);
      if (j < i) {
        heap[waiting++] = j;
        std::push_heap(heap, heap + waiting, later);
      } else {
        above_[++count_above_] = j;
      }
    }
  }
  count_below_ = kept;
  std::copy_n(finished_.data(), kept, below_.data());
}

/// Keeps the `most` largest entries above the tolerance; the others leave the work row.
void ilu_factors::keep_largest(work_array<int>& list, int& count, double tolerance, int most) {
  const auto drop = [this](int j) {
    dropped_ += row_[j];
    in_row_[j] = 0;
  };
  int kept = 0;
  for (int m = 1; m <= count; ++m) {
    if (std::abs(row_[list[m]]) > tolerance)
      list[++kept] = list[m];
    else
      drop(list[m]);
  }
  if (kept > most) {
    const auto larger = [this](int j, int k) {
      const double x = std::abs(row_[j]), y = std::abs(row_[k]);
      return x > y || (x == y && j < k);
    };
    std::nth_element(list.data(), list.data() + most, list.data() + kept, larger);
    for (int m = most + 1; m <= kept; ++m) drop(list[m]);
    kept = most;
  }
  count = kept;
  std::sort(list.data(), list.data() + count);
}

/// Brings the largest entry right of the diagonal to the diagonal where it outweighs it.
void ilu_factors::pivot_columns(int i) {
  int best = 0;
  double largest = std::abs(row_[i]);
  for (int m = 1; m <= count_above_; ++m) {
    const double x = pivot_tolerance * std::abs(row_[above_[m]]);
    if (x <= largest) continue;
    largest = x;
    best = above_[m];
  }
  if (best == 0) return;
  std::swap(row_[i], row_[best]);
  std::swap(column_at_[i], column_at_[best]);
  position_of_[column_at_[i]] = i;
  position_of_[column_at_[best]] = best;
}

bool ilu_factors::store_row(int i, double tolerance) {
  const double dropped = dropped_;  // multipliers were tested, and have acted, when they were formed
  keep_largest(below_, count_below_, 0.0, options_.lfil);
  dropped_ = dropped;
  keep_largest(above_, count_above_, tolerance, options_.lfil);
  if (options_.kind == ilu_kind::threshold_pivoting) pivot_columns(i);
  return append_row(i);
}

// Moves the work row into L and U; false for a pivot that can't be used.
bool ilu_factors::append_row(int i) {
  const double pivot = row_[i] + (options_.modified ? options_.weight * dropped_ : 0.0);
  in_row_[i] = 0;
  for (int m = 1; m <= count_below_; ++m) {
    lower_.append(below_[m], row_[below_[m]]);
    in_row_[below_[m]] = 0;
  }
  for (int m = 1; m <= count_above_; ++m) {
    upper_.append(column_at_[above_[m]], row_[above_[m]]);
    in_row_[above_[m]] = 0;
  }
  require_countable(std::max(lower_.top, upper_.top), "ilu", routine);
  lower_.start[i + 1] = static_cast<int>(lower_.top) + 1;
  upper_.start[i + 1] = static_cast<int>(upper_.top) + 1;
  if (!usable(pivot)) return false;
  inverse_[i] = 1.0 / pivot;
  return true;
}

bool ilu_factors::threshold(const level& l) {
  lower_.start[1] = upper_.start[1] = 1;
  for (int i = 1; i <= n_; ++i) {
    load_row(l, i);
    double square = row_[i] * row_[i];
    for (int m = 1; m <= count_below_; ++m) square += row_[below_[m]] * row_[below_[m]];
    for (int m = 1; m <= count_above_; ++m) square += row_[above_[m]] * row_[above_[m]];
    const double tolerance = options_.droptol * std::sqrt(square);
    eliminate(i, tolerance);
    if (!store_row(i, tolerance)) return false;
  }
  return true;
}

void ilu_factors::solve(const_vector v, vector z) {
  double* x = x_.data();
  for (int i = 1; i <= n_; ++i) {
    double s = v[i];
    for (int p = lower_.start[i]; p < lower_.start[i + 1]; ++p)
      s -= lower_.value[p] * x[lower_.column[p] - 1];
    x[i - 1] = s;
  }
  for (int i = n_; i >= 1; --i) {
    double s = x[i - 1];
    for (int p = upper_.start[i]; p < upper_.start[i + 1]; ++p)
      s -= upper_.value[p] * x[upper_.column[p] - 1];
    x[i - 1] = s * inverse_[i];
  }
  for (int i = 1; i <= n_; ++i) z[column_at_[i]] = x[i - 1];
}

}  // namespace tier
