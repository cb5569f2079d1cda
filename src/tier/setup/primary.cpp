// Primary matrix of the points.
#include "tier/setup/primary.h"

#include <algorithm>
#include <cmath>

namespace tier {

namespace {

constexpr const char* routine = "setup_i";

/// Norms of the blocks of one point's rows, by position of the neighbour.
class block_row {
 public:
  block_row(const level& lv, const primary_options& o, view<int> position, view<int> columns,
            view<double> norms, view<double> row_sums)
      : lv_(lv), o_(o), position_(position), columns_(columns), norms_(norms), row_sums_(row_sums) {}

  /// Fills positions 1 .. size(), the point itself first.
  void form(int point) {
    size_ = 0;
    enter(point);
    for (int i = lv_.iv[point]; i < lv_.iv[point + 1]; ++i)
      if (o_.nprim == 0 || lv_.iu[i] == o_.nprim) enter_neighbours(i);
    for (int i = lv_.iv[point]; i < lv_.iv[point + 1]; ++i) add_row(i);
    for (int s = 1; s <= size_; ++s) {
      position_[columns_[s]] = 0;
      if (o_.norm == block_norm_kind::frobenius) norms_[s] = std::sqrt(norms_[s]);
    }
    if (o_.sum_diagonal) {
      norms_[1] = 0.0;
      for (int s = 2; s <= size_; ++s) norms_[1] += norms_[s];
    }
  }
  int size() const { return size_; }
  int column(int s) const { return columns_[s]; }
  double value(int s) const { return s == 1 ? norms_[1] : -norms_[s]; }
  bool kept(int s) const { return s == 1 || o_.truncation == 0.0 || norms_[s] > o_.truncation * norms_[1]; }

 private:
  void enter(int point) {
    if (position_[point] != 0) return;
    position_[point] = ++size_;
    columns_[size_] = point;
    norms_[size_] = row_sums_[size_] = 0.0;
  }

  void enter_neighbours(int i) {
    for (int p = lv_.ia[i]; p < lv_.ia[i + 1]; ++p) {
      const int j = lv_.ja[p];
      if (o_.nprim == 0 || lv_.iu[j] == o_.nprim) enter(lv_.ip[j]);
    }
  }

  void add_row(int i) {
    for (int p = lv_.ia[i]; p < lv_.ia[i + 1]; ++p) {
      const int s = position_[lv_.ip[lv_.ja[p]]];
      if (s == 0) continue;
      const double v = std::abs(lv_.a[p]);
      if (o_.norm == block_norm_kind::frobenius) norms_[s] += v * v;
      if (o_.norm == block_norm_kind::row_sum) row_sums_[s] += v;
      if (o_.norm == block_norm_kind::largest) norms_[s] = std::max(norms_[s], v);
    }
    for (int s = 1; o_.norm == block_norm_kind::row_sum && s <= size_; ++s) {
      norms_[s] = std::max(norms_[s], row_sums_[s]);
      row_sums_[s] = 0.0;
    }
  }

  const level& lv_;
  const primary_options& o_;
  view<int> position_, columns_;
  view<double> norms_, row_sums_;
  int size_ = 0;
};

}  // namespace

double block_norm(const double* block, int rows, int columns, block_norm_kind norm) {
  double squares = 0.0, largest_sum = 0.0, largest = 0.0;
  for (int r = 0; r < rows; ++r) {
    double sum = 0.0;
    for (int c = 0; c < columns; ++c) {
      const double v = std::abs(block[r * columns + c]);
      squares += v * v;
      sum += v;
      largest = std::max(largest, v);
    }
    largest_sum = std::max(largest_sum, sum);
  }
  if (norm == block_norm_kind::frobenius) return std::sqrt(squares);
  return norm == block_norm_kind::row_sum ? largest_sum : largest;
}

void build_primary_matrix(level& lv, const primary_options& o) {
  const int n = lv.npnts;
  work_array<int> position, columns;
  work_array<double> norms, row_sums;
  position.allocate(n, 0, "position", routine);
  columns.allocate(n, "columns", routine);
  norms.allocate(n, "norms", routine);
  row_sums.allocate(n, "row_sums", routine);
  block_row row(lv, o, position, columns, norms, row_sums);
  lv.ib.allocate(std::int64_t{n} + 1, "ib", routine);
  std::int64_t room = 8 * std::int64_t{n};
  lv.jb.allocate(room, "jb", routine);
  lv.b.allocate(room, "b", routine);
  lv.ib[1] = 1;
  for (int point = 1; point <= n; ++point) {
    row.form(point);
    int next = lv.ib[point];
    if (next + row.size() > room) {
      room = room * 3 / 2 + row.size();
      lv.jb.resize(room, "jb", routine);
      lv.b.resize(room, "b", routine);
    }
    for (int s = 1; s <= row.size(); ++s) {
      if (!row.kept(s)) continue;
      lv.jb[next] = row.column(s);
      lv.b[next++] = row.value(s);
    }
    lv.ib[point + 1] = next;
  }
}

}  // namespace tier
