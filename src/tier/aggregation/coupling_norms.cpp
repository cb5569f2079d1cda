// Norms of couplings by entries and by energy.
#include "tier/aggregation/coupling_norms.h"

#include <algorithm>
#include <cmath>

#include "tier/aggregation/block_lanes.h"
#include "tier/store/row_loop.h"

namespace tier::aggregation {

namespace {

template <class T>
struct entries_kernel {
  const block_matrix<T>& a;
  from_zero<float>& norm;
  int lo, hi;

  void rows() const {
    const auto size = static_cast<int>(a.size_of_block());
    for (std::int64_t k = a.start[lo]; k < a.start[hi]; ++k) {
      const T* const v = a.block(k);
      double sum = 0.0;
      for (int m = 0; m < size; ++m) sum += static_cast<double>(v[m]) * v[m];
      norm[k] = static_cast<float>(std::sqrt(sum));
    }
  }
};

/// By |D_i^-1/2 A_ij D_j^-1/2|^2 = trace(D_i^-1 A_ij D_j^-1 A_ij^T), in double.
template <class T>
struct energy_kernel {
  const block_matrix<T>& a;
  const from_zero<T>& inverse;
  from_zero<float>& norm;
  int lo, hi;

  using block_in_double = double[most_block * most_block + padding];

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : a.rows;
    block_in_double di = {}, dj = {}, v = {};
    for (int i = lo; i < hi; ++i) {
      widen(inverse.data() + std::int64_t{i} * b * b, b, di);
      for (std::int64_t k = a.start[i]; k < a.start[i + 1]; ++k) {
        if (a.column[k] == i) {
          norm[k] = std::sqrt(static_cast<float>(b));
          continue;
        }
        widen(inverse.data() + std::int64_t{a.column[k]} * b * b, b, dj);
        widen(a.block(k), b, v);
        norm[k] = static_cast<float>(std::sqrt(std::max(0.0, trace<R>(b, di, v, dj))));
      }
    }
  }

  /// Sum of the products of the entries of D_i^-1 A_ij and A_ij D_j^-1.
  template <int R>
  TIER_INLINE static double trace(int b, const block_in_double& di, const block_in_double& v,
                                  const block_in_double& dj) {
    double left_column[most_block + padding] = {}, right_column[most_block + padding] = {};
    lanes<double, R> sum(b);
    for (int q = 0; q < b; ++q) {
      lanes<double, R> left(b), right(b);
      for (int m = 0; m < b; ++m) {
        left.add_scaled(di + m * b, v[q * b + m]);
        right.add_scaled(v + m * b, dj[q * b + m]);
      }
      left.store_wide(left_column);
      right.store_wide(right_column);
      sum.add_product(left_column, right_column);
    }
    return sum.sum();
  }
};

TIER_CLONES void run(const entries_kernel<float>& k) { k.rows(); }
TIER_CLONES void run(const entries_kernel<double>& k) { k.rows(); }
TIER_CLONES void run(const energy_kernel<float>& k) { by_size(k.a.rows, k); }
TIER_CLONES void run(const energy_kernel<double>& k) { by_size(k.a.rows, k); }

}  // namespace

template <class T>
void coupling_norms(const block_matrix<T>& a, const from_zero<T>& inverse, strength_measure measure,
                    from_zero<float>& norm) {
  norm.allocate(a.blocks(), "norm", "coupling_norms");
  for_chunks(a.n, block_team(a.n), [&](const row_chunk& c) {
    if (measure == strength_measure::energy)
      run(energy_kernel<T>{a, inverse, norm, c.lo - 1, c.hi});
    else
      run(entries_kernel<T>{a, norm, c.lo - 1, c.hi});
  });
}
template void coupling_norms(const block_matrix<float>&, const from_zero<float>&, strength_measure,
                             from_zero<float>&);
template void coupling_norms(const block_matrix<double>&, const from_zero<double>&, strength_measure,
                             from_zero<float>&);

}  // namespace tier::aggregation
