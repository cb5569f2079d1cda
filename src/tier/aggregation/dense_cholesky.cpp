// Dense Cholesky of the last level by LAPACK.
#include <utility>

#include "tier/aggregation/block_level.h"
#include "tier/solve/lapack.h"

namespace tier::aggregation {

bool dense_cholesky::factorise(int n, from_zero<double>&& matrix) {
  n_ = n;
  factor_ = std::move(matrix);
  int outcome = 0;
  dpotrf_("L", &n_, factor_.data(), &n_, &outcome);
  return outcome == 0;
}

void dense_cholesky::solve(double* x) const {
  const int one = 1;
  int outcome = 0;
  dpotrs_("L", &n_, &one, factor_.data(), &n_, x, &n_, &outcome);
}

}  // namespace tier::aggregation
