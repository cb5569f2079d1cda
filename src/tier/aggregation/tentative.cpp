// QR by aggregate.
#include "tier/aggregation/tentative.h"

#include <algorithm>
#include <cmath>

#include "tier/store/row_loop.h"

namespace tier::aggregation {

namespace {

constexpr const char* routine = "factor_by_aggregate";

/// Points of every aggregate: member[first[a]] .. member[first[a + 1] - 1].
struct members {
  from_zero<int> first, member;
  int largest = 0;

  members(int n, const from_zero<int>& aggregate, int aggregates) {
    first.allocate(aggregates + 1, 0, "first", routine);
    member.allocate(n, "member", routine);
    for (int i = 0; i < n; ++i)
      if (aggregate[i] >= 0) ++first[aggregate[i] + 1];
    for (int a = 0; a < aggregates; ++a) {
      largest = std::max(largest, first[a + 1]);
      first[a + 1] += first[a];
    }
    for (int i = 0; i < n; ++i)
      if (aggregate[i] >= 0) member[first[aggregate[i]]++] = i;
    for (int a = aggregates; a > 0; --a) first[a] = first[a - 1];
    first[0] = 0;
  }
};

double product_of(const double* x, const double* y, int n) {
  double s = 0.0;
  for (int i = 0; i < n; ++i) s += x[i] * y[i];
  return s;
}

/// Gram-Schmidt of the m columns of q (rows x m), R by columns.
void orthonormalise(int rows, int m, double* q, double* r) {
  constexpr double dependent = 1e-12;
  std::fill_n(r, m * m, 0.0);
  for (int j = 0; j < m; ++j) {
    double* const column = q + std::int64_t{j} * rows;
    const double before = product_of(column, column, rows);
    for (int pass = 0; pass < 2; ++pass)
      for (int k = 0; k < j; ++k) {
        const double* const other = q + std::int64_t{k} * rows;
        const double h = product_of(other, column, rows);
        for (int i = 0; i < rows; ++i) column[i] -= h * other[i];
        r[j * m + k] += h;
      }
    const double after = product_of(column, column, rows);
    const bool kept = after > dependent * before;
    const double length = kept ? std::sqrt(after) : 0.0;
    r[j * m + j] = length;
    for (int i = 0; i < rows; ++i) column[i] = kept ? column[i] / length : 0.0;
  }
}

void clear_isolated(int n, std::int64_t size, const from_zero<int>& aggregate, near_null& vectors) {
  for (int i = 0; i < n; ++i)
    if (aggregate[i] < 0) std::fill_n(&vectors[i * size], size, 0.0);
}

}  // namespace

void factor_by_aggregate(int n, int b, int m, const from_zero<int>& aggregate, int aggregates,
                         near_null& vectors, near_null& coarse) {
  const members of(n, aggregate, aggregates);
  const int team = block_team(n);
  const std::int64_t size = std::int64_t{b} * m, room = of.largest * size;
  from_zero<double> store;
  store.allocate(room * team, "store", routine);
  coarse.allocate(std::int64_t{aggregates} * m * m + padding, 0.0, "coarse", routine);
  for_chunks(aggregates, team, [&](const row_chunk& c) {
    double* const q = store.data() + c.tid * room;
    for (int a = c.lo - 1; a < c.hi; ++a) {
      const int count = of.first[a + 1] - of.first[a], rows = count * b;
      const int* const points = of.member.data() + of.first[a];
      for (int k = 0; k < count; ++k)
        for (int j = 0; j < m; ++j)
          std::copy_n(&vectors[points[k] * size + j * b], b, q + std::int64_t{j} * rows + k * b);
      orthonormalise(rows, m, q, &coarse[std::int64_t{a} * m * m]);
      for (int k = 0; k < count; ++k)
        for (int j = 0; j < m; ++j)
          std::copy_n(q + std::int64_t{j} * rows + k * b, b, &vectors[points[k] * size + j * b]);
    }
  });
  clear_isolated(n, size, aggregate, vectors);
}

}  // namespace tier::aggregation
