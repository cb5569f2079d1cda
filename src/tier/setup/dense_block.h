// Solution with the small dense matrices of a point.
// Called by the block interpolation.
#pragma once

#include "tier/store/numbered.h"

namespace tier {

/// Row-major rows x columns.
struct dense_block {
  int rows = 0, columns = 0;
  numbered_list<double> v;

  void assign(int r, int c) {
    rows = r;
    columns = c;
    v.assign(r * c, 0.0);
  }
  double& operator()(int r, int c) { return v[r * columns + c]; }
  double operator()(int r, int c) const { return v[r * columns + c]; }
};

/// x <- d^-1 x by Gauss with row exchanges; false: d is singular. d is overwritten.
bool solve_from_left(dense_block& d, dense_block& x);

/// t <- transpose of b.
void transpose(const dense_block& b, dense_block& t);

}  // namespace tier
