// Smoothing of interpolation by one damped Jacobi step with block diagonals.
#include "tier/aggregation/prolongator.h"

#include <algorithm>

#include "tier/store/row_loop.h"

namespace tier::aggregation {

namespace {

constexpr const char* routine = "smooth_interpolation";

/// Coarse columns of row i, in order of discovery, each marked with its place; other marks are -1.
int collect(const block_pattern& a, const from_zero<int>& aggregate, int i, int* mark, int* columns) {
  int count = 0;
  for (int k = a.start[i]; k < a.start[i + 1]; ++k) {
    const int c = aggregate[a.column[k]];
    if (c < 0 || mark[c] >= 0) continue;
    mark[c] = count;
    columns[count++] = c;
  }
  return count;
}

template <class T>
class smoothing {
 public:
  smoothing(block_rows& a, const from_zero<T>& inverse, const block_matrix<double>& tentative, int aggregates,
            double omega, block_matrix<T>& p)
      : a_(a), inverse_(inverse), tentative_(tentative), aggregates_(aggregates), omega_(omega), p_(p) {}

  void run() {
    const block_pattern& pattern = a_.pattern();
    const int n = pattern.n, team = block_team(n), longest = a_.longest();
    b_ = pattern.block;
    p_.n = n;
    p_.rows = b_;
    p_.columns = m_ = tentative_.columns;
    mark_.allocate(std::int64_t{team} * aggregates_, "mark", routine);
    found_.allocate(std::int64_t{team} * longest, "found", routine);
    room_ = std::int64_t{longest} * padded(b_) * m_ + padding;
    product_.allocate(room_ * team, "product", routine);
    p_.start.allocate(n + 1, 0, "start", routine);
    for_chunks(n, team, [&](const row_chunk& c) { count_rows(c, longest); });
    for (int i = 0; i < n; ++i) p_.start[i + 1] += p_.start[i];
    p_.column.allocate(p_.start[n], "column", routine);
    p_.allocate_blocks("interpolation", routine);
    for_chunks(n, team, [&](const row_chunk& c) { fill_rows(c, longest); });
  }

 private:
  void count_rows(const row_chunk& c, int longest) {
    int* const mark = mark_.data() + std::int64_t{c.tid} * aggregates_;
    int* const found = found_.data() + std::int64_t{c.tid} * longest;
    std::fill_n(mark, aggregates_, -1);
    for (int i = c.lo - 1; i < c.hi; ++i) {
      const int count =
          tentative_.column[i] < 0 ? 0 : collect(a_.pattern(), tentative_.column, i, mark, found);
      for (int k = 0; k < count; ++k) mark[found[k]] = -1;
      p_.start[i + 1] = count;
    }
  }

  void fill_rows(const row_chunk& c, int longest) {
    int* const mark = mark_.data() + std::int64_t{c.tid} * aggregates_;
    int* const found = found_.data() + std::int64_t{c.tid} * longest;
    double* const product = product_.data() + c.tid * room_;
    for (int i = c.lo - 1; i < c.hi; ++i) {
      if (tentative_.column[i] < 0) continue;
      const block_pattern& a = a_.pattern();
      const int count = collect(a, tentative_.column, i, mark, found);
      std::fill_n(product, std::int64_t{count} * padded(b_) * m_, 0.0);
      add_row_product(a_.row(i, c.tid), &a.column[a.start[i]], a_.columns_of(i), b_, tentative_, mark,
                      product);
      const std::int64_t first = p_.start[i];
      subtract_from_tentative(inverse_.data() + std::int64_t{i} * b_ * b_, omega_, b_, m_, count, product,
                              mark[tentative_.column[i]], tentative_.block(i), p_.block(first));
      for (int k = 0; k < count; ++k) {
        p_.column[first + k] = found[k];
        mark[found[k]] = -1;
      }
    }
  }

  block_rows& a_;
  const from_zero<T>& inverse_;
  const block_matrix<double>& tentative_;
  int aggregates_, b_ = 0, m_ = 0;
  double omega_;
  block_matrix<T>& p_;
  from_zero<int> mark_, found_;
  from_zero<double> product_;
  std::int64_t room_ = 0;
};

}  // namespace

template <class T>
void smooth_interpolation(block_rows& a, const from_zero<T>& inverse, const block_matrix<double>& tentative,
                          int aggregates, double omega, block_matrix<T>& p) {
  smoothing<T>(a, inverse, tentative, aggregates, omega, p).run();
}

template <class T>
void index_transposed(const block_matrix<T>& p, int coarse_points, transposed_index& index) {
  constexpr const char* name = "index_transposed";
  index.start.allocate(coarse_points + 1, 0, "start", name);
  index.row.allocate(p.blocks(), "row", name);
  index.block.allocate(p.blocks(), "block", name);
  for (int k = 0; k < p.blocks(); ++k) ++index.start[p.column[k] + 1];
  for (int c = 0; c < coarse_points; ++c) index.start[c + 1] += index.start[c];
  for (int i = 0; i < p.n; ++i)
    for (int k = p.start[i]; k < p.start[i + 1]; ++k) {
      const int place = index.start[p.column[k]]++;
      index.row[place] = i;
      index.block[place] = k;
    }
  for (int c = coarse_points; c > 0; --c) index.start[c] = index.start[c - 1];
  index.start[0] = 0;
}

template void smooth_interpolation(block_rows&, const from_zero<float>&, const block_matrix<double>&, int,
                                   double, block_matrix<float>&);
template void smooth_interpolation(block_rows&, const from_zero<double>&, const block_matrix<double>&, int,
                                   double, block_matrix<double>&);
template void index_transposed(const block_matrix<float>&, int, transposed_index&);
template void index_transposed(const block_matrix<double>&, int, transposed_index&);

}  // namespace tier::aggregation
