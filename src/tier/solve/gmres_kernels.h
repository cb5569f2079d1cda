// The vector work of one GMRES step over contiguous Krylov columns. Called by gmres.
#pragma once

#include <cstdint>

#include "tier/store/work_arrays.h"

namespace tier {

/// Columns of one block, each beginning on a cache line.
class krylov_block {
 public:
  krylov_block(int n, int columns, const char* name, const char* routine)
      : stride_((static_cast<std::int64_t>(n) + 7) / 8 * 8) {
    values_.allocate(stride_ * columns, name, routine);
  }
  view<double> operator()(int j) { return view<double>(values_.data() + (j - 1) * stride_); }

 private:
  std::int64_t stride_;
  work_array<double> values_;
};

/// Modified Gram-Schmidt of w against v(1)..v(j): h(i) = (w, v(i)), then w <- w - h(i) v(i), one i after the
/// other. h(1) is given. Each pass makes the update of one i and the scalar product of the next, so that w is
/// read once per i. Returns (w, w) of the result.
double orthogonalise(int n, int j, krylov_block& v, view<double> h, view<double> w);

/// u <- u + sum_{i=1..j} y(i) z(i), four columns at a time.
void add_combination(int n, int j, krylov_block& z, view<const double> y, view<double> u);

}  // namespace tier
