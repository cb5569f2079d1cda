// Dense direct solution of a small level by LAPACK: factor once, substitute many times.
// Used by cgsolve for nrc 6, 8 and 10.
#pragma once

#include "tier/store/hierarchy.h"

namespace tier {

enum class dense_method { partial_pivoting, full_pivoting, least_squares };

class dense_solver {
 public:
  /// Factors the level's matrix; a pinned row counts as its diagonal alone. False: singular (never with
  /// least_squares, where dependent columns take no part in the solution).
  bool factorise(const level& l, view<const int> pinned, dense_method method);

  dense_method method() const { return method_; }

  /// u <- A^-1 f, or the least-squares solution. No allocation.
  void substitute(view<const double> f, view<double> u);

 private:
  bool factorise_qr();
  void substitute_qr(view<double> u);

  int n_ = 0, rank_ = 0;
  dense_method method_ = dense_method::partial_pivoting;
  work_array<double> a_, tau_, work_, x_;
  work_array<int> rows_, columns_;
};

}  // namespace tier
