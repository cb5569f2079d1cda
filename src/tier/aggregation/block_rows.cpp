// Products of block rows in double.
#include "tier/aggregation/block_rows.h"

#include <algorithm>

#include "tier/aggregation/block_lanes.h"

namespace tier::aggregation {

namespace {

/// c += A B for a block A of R rows and b columns (leading dimension `lead`), B of b x m (leading dimension
/// lead_b), C in padded columns.
template <class T, int R>
TIER_INLINE void add_block(int rows, const double* a, int lead, int b, const T* right, int lead_b, int m,
                           double* c) {
  const int wide = R > 0 ? width_of(R) : rows;
  for (int col = 0; col < m; ++col) {
    lanes<double, R> sum(rows);
    sum.load(c + col * wide);
    for (int t = 0; t < b; ++t) sum.add_scaled(a + t * lead, static_cast<double>(right[col * lead_b + t]));
    sum.store_wide(c + col * wide);
  }
}

template <class T>
struct row_product_kernel {
  const double* row;
  const int* columns;
  int count, b_;
  const block_matrix<T>& p;
  const int* place;
  double* out;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : b_, wide = R > 0 ? width_of(R) : b_, m = p.columns;
    for (int k = 0; k < count; ++k) {
      const int j = columns[k];
      for (int q = p.start[j]; q < p.start[j + 1]; ++q) {
        if (p.column[q] < 0) continue;  // a point without aggregate
        add_block<T, R>(b, row + std::int64_t{k} * b * b, b, b, p.block(q), b, m,
                        out + std::int64_t{place[p.column[q]]} * wide * m);
      }
    }
  }
};

template <class T>
struct transposed_kernel {
  const block_matrix<T>& p;
  int k;
  const int* columns;
  int count;
  const double* product;
  const int* place;
  double* out;

  /// R: rows of the coarse block.
  template <int R>
  TIER_INLINE void rows() const {
    const int b = p.rows, m = R > 0 ? R : p.columns, wide = R > 0 ? width_of(R) : m, wide_b = padded(b);
    double turned[most_block * most_block + padding] = {};
    const T* const block = p.block(k);
    for (int t = 0; t < b; ++t)
      for (int r = 0; r < m; ++r) turned[t * wide + r] = block[r * b + t];
    for (int c = 0; c < count; ++c)
      add_block<double, R>(m, turned, wide, b, product + std::int64_t{c} * wide_b * m, wide_b, m,
                           out + std::int64_t{place[columns[c]]} * wide * m);
  }
};

template <class T>
struct damping_kernel {
  const T* inverse;
  double omega;
  int b_, m, count, own;
  const double *tentative, *product;
  T* out;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : b_, wide = R > 0 ? width_of(R) : b_;
    double factor[most_block * most_block + padding] = {}, column[most_block + padding];
    for (int t = 0; t < b * b; ++t) factor[t] = -omega * static_cast<double>(inverse[t]);
    for (int k = 0; k < count * m; ++k) {
      lanes<double, R> sum(b);
      if (k / m == own) sum.load(tentative + k % m * b);
      for (int t = 0; t < b; ++t) sum.add_scaled(factor + t * b, product[k * wide + t]);
      sum.store_wide(column);
      for (int t = 0; t < b; ++t) out[k * b + t] = static_cast<T>(column[t]);
    }
  }
};

TIER_CLONES void run(const row_product_kernel<float>& k) { by_size(k.b_, k); }
TIER_CLONES void run(const row_product_kernel<double>& k) { by_size(k.b_, k); }
TIER_CLONES void run(const damping_kernel<float>& k) { by_size(k.b_, k); }
TIER_CLONES void run(const damping_kernel<double>& k) { by_size(k.b_, k); }
TIER_CLONES void run(const transposed_kernel<float>& k) { by_size(k.p.columns, k); }
TIER_CLONES void run(const transposed_kernel<double>& k) { by_size(k.p.columns, k); }

}  // namespace

int padded(int rows) { return width_of(rows); }

int block_rows::longest() const {
  int most = 0;
  for (int i = 0; i < pattern_.n; ++i) most = std::max(most, columns_of(i));
  return most;
}

template <class T>
void add_row_product(const double* row, const int* columns, int count, int b, const block_matrix<T>& p,
                     const int* place, double* out) {
  run(row_product_kernel<T>{row, columns, count, b, p, place, out});
}

template <class T>
void add_transposed_product(const block_matrix<T>& p, int k, const int* columns, int count,
                            const double* product, const int* place, double* out) {
  run(transposed_kernel<T>{p, k, columns, count, product, place, out});
}

template <class T>
void subtract_from_tentative(const T* inverse, double omega, int b, int m, int count, const double* product,
                             int own, const double* tentative, T* out) {
  run(damping_kernel<T>{inverse, omega, b, m, count, own, tentative, product, out});
}

#define TIER_PRODUCTS(T)                                                                                    \
  template void add_row_product(const double*, const int*, int, int, const block_matrix<T>&, const int*,    \
                                double*);                                                                   \
  template void subtract_from_tentative(const T*, double, int, int, int, const double*, int, const double*, \
                                        T*);                                                                \
  template void add_transposed_product(const block_matrix<T>&, int, const int*, int, const double*,         \
                                       const int*, double*);
TIER_PRODUCTS(float)
TIER_PRODUCTS(double)
#undef TIER_PRODUCTS

}  // namespace tier::aggregation
