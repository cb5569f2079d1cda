// Arithmetic of one row of the coarse operator.
#include "tier/setup/coarse_row.h"

#include "tier/setup/couplings.h"

namespace tier {

struct growing_row {
  int* marker;
  int* ja;
  double* a;
  int first;
  int next = first;

  /// Adds v in a column. A branch, not a select: with a select every address in `a` waits for the marker.
  void add(int column, double v) {
    const int at = marker[column];
    if (at >= first) {
      a[at] += v;
      return;
    }
    marker[column] = next;
    ja[next] = column;
    a[next] = v;
    ++next;
  }

  /// Adds v times row l of the weights; false, and nothing added, when the row might end behind `limit`.
  bool add(const weight_rows& p, int l, double v, std::int64_t limit) {
    const int begin = p.iw[l], end = p.iw[l + 1];
    if (std::int64_t{next} + (end - begin) - 1 > limit) return false;
    for (int q = begin; q < end; ++q) add(p.jw[q], p.w[q] * v);
    return true;
  }
};

/// Fine rows lie apart: what a coarse row needs is asked for in time.
[[gnu::always_inline]] inline void coarse_row_former::fetch_ahead(int c) const {
  constexpr int rows_ahead = 2;
  if (c + rows_ahead > coarse_rows_) return;
  const level& f = fine_;
  const int* const ia = f.ia.data() - 1;
  const int* const ja = f.ja.data() - 1;
  const double* const a = f.a.data() - 1;
  const int end = f.rt[c + rows_ahead + 1];
  for (int t = f.rt[c + rows_ahead]; t < end; ++t) {
    const int i = f.jrt[t];
    __builtin_prefetch(a + ia[i]);
    __builtin_prefetch(ja + ia[i]);
    __builtin_prefetch(&f.w[f.iw[i]]);
    __builtin_prefetch(&f.jw[f.iw[i]]);
  }
}

/// Row c of R A, length_ entries of the scratch.
[[gnu::noinline]] void coarse_row_former::restrict_rows(int c) {
  const level& f = fine_;
  const int* const ia = f.ia.data() - 1;
  const int* const ja = f.ja.data() - 1;
  const double* const a = f.a.data() - 1;
  fetch_ahead(c);
  for (int k = 1; k <= length_; ++k) s_.fine_marker[s_.columns[k]] = 0;  // of the row before
  growing_row row{s_.fine_marker.data() - 1, s_.columns.data() - 1, s_.sums.data() - 1, 1};
  const int last = f.rt[c + 1];
  for (int t = f.rt[c]; t < last; ++t) {
    const int i = f.jrt[t], end = ia[i + 1];
    const double r = f.wrt[t];
    for (int p = ia[i]; p < end; ++p) {
      const double v = r * a[p];
      if (v == 0.0 && !keep_zeros_) continue;
      row.add(ja[p], v);
    }
  }
  length_ = row.next - 1;
}

/// Adds row c of R A times P; false without room.
[[gnu::noinline]] bool coarse_row_former::add_restricted_row(int c, growing_row& result, std::int64_t limit) {
  restrict_rows(c);
  const weight_rows p{fine_.iw, fine_.jw, fine_.w};
  const view<int> columns = s_.columns;
  const view<double> sums = s_.sums;
  const int length = length_;
  growing_row row = result;
  int k = 1;
  while (k <= length && row.add(p, columns[k], sums[k], limit)) ++k;
  result = row;
  return k > length;
}

/// Adds each product r a_il w_lm by itself; false without room.
[[gnu::noinline]] bool coarse_row_former::add_products(int c, growing_row& result, std::int64_t limit) {
  const level& f = fine_;
  const weight_rows weights{f.iw, f.jw, f.w};
  const int* const ia = f.ia.data() - 1;
  const int* const ja = f.ja.data() - 1;
  const double* const a = f.a.data() - 1;
  growing_row row = result;
  fetch_ahead(c);
  bool room = true;
  for (int t = f.rt[c]; t < f.rt[c + 1] && room; ++t) {
    const int i = f.jrt[t], end = ia[i + 1];
    const double r = f.wrt[t];
    for (int p = ia[i]; p < end && room; ++p) {
      const double v = r * a[p];
      if (v == 0.0 && !keep_zeros_) continue;
      room = row.add(weights, ja[p], v, limit);
    }
  }
  result = row;
  return room;
}

// The coarse marker holds the last row that had a column.
int coarse_row_former::count(int c) {
  restrict_rows(c);
  const weight_rows p{fine_.iw, fine_.jw, fine_.w};
  const view<int> columns = s_.columns, marker = s_.coarse_marker;
  const int length = length_;
  marker[c] = c;
  int entries = 1;
  for (int k = 1; k <= length; ++k) {
    const int l = columns[k], end = p.iw[l + 1];
    for (int q = p.iw[l]; q < end; ++q) {
      int& last = marker[p.jw[q]];
      entries += last != c;
      last = c;
    }
  }
  return entries;
}

std::int64_t coarse_row_former::form(int c, std::int64_t start, std::int64_t limit, view<int> ja,
                                     view<double> a) {
  if (start > limit) return 0;
  growing_row row{s_.coarse_marker.data() - 1, ja.data() - 1, a.data() - 1, static_cast<int>(start)};
  row.add(c, 0.0);  // the diagonal stands first
  const bool complete =
      sums_restricted_rows(fine_) ? add_restricted_row(c, row, limit) : add_products(c, row, limit);
  if (complete) return row.next;
  for (int p = row.first; p < row.next; ++p) s_.coarse_marker[ja[p]] = 0;
  return 0;
}

}  // namespace tier
