// Galerkin product by slabs of coarse rows.
#include "tier/aggregation/block_galerkin.h"

#include <algorithm>

#include "tier/aggregation/diagonal_blocks.h"
#include "tier/store/row_loop.h"

namespace tier::aggregation {

namespace {

constexpr const char* routine = "block_galerkin";

/// visit(J) once for each coarse column of coarse row i, the diagonal first.
template <class T, class Visit>
void for_columns(const block_pattern& a, const block_matrix<T>& p, const transposed_index& index, int i,
                 int* mark, Visit visit) {
  mark[i] = i;
  visit(i);
  for (int e = index.start[i]; e < index.start[i + 1]; ++e) {
    const int row = index.row[e];
    for (int k = a.start[row]; k < a.start[row + 1]; ++k)
      for (int q = p.start[a.column[k]]; q < p.start[a.column[k] + 1]; ++q) {
        const int c = p.column[q];
        if (mark[c] == i) continue;
        mark[c] = i;
        visit(c);
      }
  }
}

template <class T>
class values {
 public:
  values(block_rows& a, const block_matrix<T>& p, const transposed_index& index, block_matrix<double>& coarse)
      : a_(a), p_(p), index_(index), c_(coarse), b_(padded(p.rows)), m_(p.columns), wide_(padded(p.columns)) {
    const int n = p.n, team = block_team(n);
    mark_.allocate(std::int64_t{team} * c_.n, -1, "mark", routine);
    where_.allocate(n, -1, "where", routine);
    int longest = 0;
    for (int i = 0; i < c_.n; ++i) longest = std::max(longest, c_.start[i + 1] - c_.start[i]);
    room_ = std::int64_t{longest} * wide_ * m_ + padding;
    row_.allocate(room_ * team, "row", routine);
  }

  void run() {
    constexpr int slabs = 8, least = 512;
    const int step = std::max(least, (c_.n + slabs - 1) / slabs);
    for (int first = 0; first < c_.n; first += step) form(first, std::min(c_.n, first + step));
  }

 private:
  void form(int first, int last) {
    collect_rows(first, last);
    form_products();
    for_chunks(last - first, block_team(p_.n), [&](const row_chunk& c) {
      for (int i = first + c.lo - 1; i < first + c.hi; ++i) form_coarse_row(i, c.tid);
    });
    for (int k = 0; k < rows_; ++k) where_[slab_[k]] = -1;
  }

  /// Fine rows that the coarse rows of the slab need.
  void collect_rows(int first, int last) {
    slab_.need(std::min<std::int64_t>(p_.n, index_.start[last] - index_.start[first]), "slab", routine);
    rows_ = 0;
    for (int e = index_.start[first]; e < index_.start[last]; ++e) {
      const int i = index_.row[e];
      if (where_[i] >= 0) continue;
      where_[i] = rows_;
      slab_[rows_++] = i;
    }
  }

  int* mark_of(int tid) { return mark_.data() + std::int64_t{tid} * c_.n; }

  int columns_of_product(int i, int* mark, int* columns) const {
    const block_pattern& a = a_.pattern();
    int count = 0;
    for (int k = a.start[i]; k < a.start[i + 1]; ++k)
      for (int q = p_.start[a.column[k]]; q < p_.start[a.column[k] + 1]; ++q) {
        const int c = p_.column[q];
        if (mark[c] >= 0) continue;
        mark[c] = count;
        columns[count++] = c;
      }
    return count;
  }

  static void unmark(int* mark, const int* columns, int count) {
    for (int k = 0; k < count; ++k) mark[columns[k]] = -1;
  }

  void form_products() {
    const int team = block_team(p_.n);
    start_.need(rows_ + 1, "start", routine);
    int most = 0;
    for (int k = 0; k < rows_; ++k) {
      const block_pattern& a = a_.pattern();
      int bound = 0;
      for (int e = a.start[slab_[k]]; e < a.start[slab_[k] + 1]; ++e)
        bound += p_.start[a.column[e] + 1] - p_.start[a.column[e]];
      most = std::max(most, std::min(bound, c_.n));
    }
    found_.need(std::int64_t{team} * most, "found", routine);
    start_[0] = 0;
    for_chunks(rows_, team, [&](const row_chunk& c) {
      int* const found = found_.data() + std::int64_t{c.tid} * most;
      for (int k = c.lo - 1; k < c.hi; ++k) {
        start_[k + 1] = columns_of_product(slab_[k], mark_of(c.tid), found);
        unmark(mark_of(c.tid), found, start_[k + 1]);
      }
    });
    for (int k = 0; k < rows_; ++k) start_[k + 1] += start_[k];
    column_.need(start_[rows_], "column", routine);
    product_.need(std::int64_t{start_[rows_]} * b_ * m_ + padding, "product", routine);
    for_chunks(rows_, team, [&](const row_chunk& c) {
      for (int k = c.lo - 1; k < c.hi; ++k) form_product(k, c.tid);
    });
  }

  void form_product(int k, int tid) {
    const block_pattern& a = a_.pattern();
    const int i = slab_[k];
    int* const columns = &column_[start_[k]];
    const int count = columns_of_product(i, mark_of(tid), columns);
    double* const out = product_.data() + std::int64_t{start_[k]} * b_ * m_;
    std::fill_n(out, std::int64_t{count} * b_ * m_, 0.0);
    add_row_product(a_.row(i, tid), &a.column[a.start[i]], a_.columns_of(i), p_.rows, p_, mark_of(tid), out);
    unmark(mark_of(tid), columns, count);
  }

  void form_coarse_row(int i, int tid) {
    int* const place = mark_of(tid);
    double* const out = row_.data() + tid * room_;
    const int first = c_.start[i], count = c_.start[i + 1] - first;
    for (int k = 0; k < count; ++k) place[c_.column[first + k]] = k;
    std::fill_n(out, std::int64_t{count} * wide_ * m_, 0.0);
    for (int e = index_.start[i]; e < index_.start[i + 1]; ++e) {
      const int k = where_[index_.row[e]];
      add_transposed_product(p_, index_.block[e], &column_[start_[k]], start_[k + 1] - start_[k],
                             product_.data() + std::int64_t{start_[k]} * b_ * m_, place, out);
    }
    for (int k = 0; k < count; ++k) {
      place[c_.column[first + k]] = -1;
      for (int j = 0; j < m_; ++j)
        std::copy_n(out + (std::int64_t{k} * m_ + j) * wide_, m_, c_.block(first + k) + j * m_);
    }
    complete_diagonal(m_, c_.block(first));
  }

  block_rows& a_;
  const block_matrix<T>& p_;
  const transposed_index& index_;
  block_matrix<double>& c_;
  int b_, m_, wide_, rows_ = 0;
  from_zero<int> mark_, where_, slab_, start_, column_, found_;
  from_zero<double> product_, row_;
  std::int64_t room_ = 0;
};

}  // namespace

template <class T>
void galerkin_pattern(const block_pattern& a, const block_matrix<T>& p, const transposed_index& index,
                      int coarse_points, block_matrix<double>& coarse) {
  coarse.n = coarse_points;
  coarse.rows = coarse.columns = p.columns;
  const int team = block_team(p.n);
  from_zero<int> mark;
  mark.allocate(std::int64_t{team} * coarse_points, -1, "mark", routine);
  coarse.start.allocate(coarse_points + 1, 0, "start", routine);
  for_chunks(coarse_points, team, [&](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i)
      for_columns(a, p, index, i, mark.data() + std::int64_t{c.tid} * coarse_points,
                  [&](int) { ++coarse.start[i + 1]; });
  });
  for (int i = 0; i < coarse_points; ++i) coarse.start[i + 1] += coarse.start[i];
  coarse.column.allocate(coarse.start[coarse_points], "column", routine);
  mark.allocate(mark.size(), -1, "mark", routine);
  for_chunks(coarse_points, team, [&](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i) {
      int next = coarse.start[i];
      for_columns(a, p, index, i, mark.data() + std::int64_t{c.tid} * coarse_points,
                  [&](int column) { coarse.column[next++] = column; });
    }
  });
  coarse.allocate_blocks("a", routine);
}

template <class T>
void galerkin_values(block_rows& a, const block_matrix<T>& p, const transposed_index& index,
                     block_matrix<double>& coarse) {
  values<T>(a, p, index, coarse).run();
}

template void galerkin_pattern(const block_pattern&, const block_matrix<float>&, const transposed_index&, int,
                               block_matrix<double>&);
template void galerkin_pattern(const block_pattern&, const block_matrix<double>&, const transposed_index&,
                               int, block_matrix<double>&);
template void galerkin_values(block_rows&, const block_matrix<float>&, const transposed_index&,
                              block_matrix<double>&);
template void galerkin_values(block_rows&, const block_matrix<double>&, const transposed_index&,
                              block_matrix<double>&);

}  // namespace tier::aggregation
