// Gauss-Seidel sweeps over near-null vectors, in one thread: a row takes what the rows before it have become.
#include "tier/aggregation/mode_repair.h"

#include "tier/aggregation/block_lanes.h"

namespace tier::aggregation {

namespace {

template <class T>
struct repair_kernel {
  const block_matrix<T>& a;
  const from_zero<T>& inverse;
  int m;
  double* vectors;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : a.rows;
    for (int i = 0; i < a.n; ++i) relax<R>(b, i);
    for (int i = a.n - 1; i >= 0; --i) relax<R>(b, i);
  }

  /// Six vectors at a time stay in registers. A point without couplings keeps its vectors: nothing tells what
  /// they should be.
  template <int R>
  TIER_INLINE void relax(int b, int i) const {
    if (a.start[i + 1] - a.start[i] < 2) return;
    for (int first = 0; first < m; first += 6) relax_columns<R>(b, i, first, m - first < 6 ? m - first : 6);
  }

  template <int R>
  TIER_INLINE void relax_columns(int b, int i, int first, int count) const {
    double block[most_block * most_block + padding] = {}, coupled[most_block + padding];
    lanes<double, R> sum[6] = {lanes<double, R>(b), lanes<double, R>(b), lanes<double, R>(b),
                               lanes<double, R>(b), lanes<double, R>(b), lanes<double, R>(b)};
    const std::int64_t size = std::int64_t{b} * m;
    for (int k = a.start[i] + 1; k < a.start[i + 1]; ++k) {
      widen(a.block(k), b, block);
      const double* const other = vectors + a.column[k] * size + first * b;
      for (int t = 0; t < b; ++t)
        for (int j = 0; j < count; ++j) sum[j].add_scaled(block + t * b, other[j * b + t]);
    }
    widen(inverse.data() + std::int64_t{i} * b * b, b, block);
    for (int j = 0; j < count; ++j) {
      sum[j].store_wide(coupled);
      lanes<double, R> own(b);
      for (int t = 0; t < b; ++t) own.add_scaled(block + t * b, -coupled[t]);
      own.store(vectors + i * size + (first + j) * b);
    }
  }
};

TIER_CLONES void run(const repair_kernel<float>& k) { by_size(k.a.rows, k); }
TIER_CLONES void run(const repair_kernel<double>& k) { by_size(k.a.rows, k); }

}  // namespace

template <class T>
void repair_modes(const block_matrix<T>& a, const from_zero<T>& inverse, int m, int sweeps,
                  near_null& vectors) {
  for (int sweep = 0; sweep < sweeps; ++sweep) run(repair_kernel<T>{a, inverse, m, vectors.data()});
}
template void repair_modes(const block_matrix<float>&, const from_zero<float>&, int, int, near_null&);
template void repair_modes(const block_matrix<double>&, const from_zero<double>&, int, int, near_null&);

}  // namespace tier::aggregation
