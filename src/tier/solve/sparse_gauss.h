// Sparse Gauss elimination: factor once, substitute many times. Used by cgsolve as its default method.
#pragma once

#include <cstdint>

#include "tier/store/work_arrays.h"

namespace tier {

/// LU factors of a square matrix with rows in a fill-reducing order and columns by threshold pivoting. The
/// matrix is taken row by row as columns of its transpose (Gilbert, Peierls, SIAM J. Sci. Stat. Comput. 9
/// (1988) 862-874), A^T = L U with L of unit diagonal. From the place on where it costs less, the remaining
/// rows are gathered as one dense block, which LAPACK factors with partial pivoting.
class sparse_gauss {
 public:
  static constexpr int done = 0, singular = 1, out_of_l = -3, out_of_u = -4;

  /// Orders the rows, estimates the store and chooses where the dense block begins. ia, ja: 1-based, diagonal
  /// first. After it estimated_l() and estimated_u() are set.
  void analyse(int n, view<const int> ia, view<const int> ja);

  /// Factors with room for licn entries of L and lirn entries of U.
  /// pinned    [1..n] nonzero: the row counts as its diagonal alone; empty: none
  /// stability a pivot is at least this times the largest candidate; the diagonal is taken where it suffices
  /// Returns done, singular, or out_of_l / out_of_u with what had been needed so far in needed().
  int factorise(view<const int> ia, view<const int> ja, view<const double> a, view<const int> pinned,
                double stability, std::int64_t licn, std::int64_t lirn);

  /// u <- A^-1 f. Pinned rows take f as it stands. No allocation.
  void substitute(view<const double> f, view<double> u);

  std::int64_t estimated_l() const { return estimated_l_; }
  std::int64_t estimated_u() const { return estimated_u_; }
  std::int64_t needed() const { return needed_; }

 private:
  void choose_dense_block();
  int reach(int first_row, view<const int> ia, view<const int> ja, bool pinned_row);
  void depth_first(int from, int& top);
  int take_column(int k, int top, double stability, std::int64_t licn, std::int64_t lirn);
  int factorise_block();
  void finish_numbering();

  int n_ = 0, block_ = 0;  // block_: first step of the dense block, n_ + 1 without one
  std::int64_t estimated_l_ = 0, estimated_u_ = 0, needed_ = 0, l_top_ = 0, u_top_ = 0;
  work_array<int> order_, below_;   // row taken in step k, bound of the entries below the diagonal
  work_array<int> step_of_column_;  // step in which a column became pivot
  work_array<int> column_of_step_;
  work_array<int> lp_, li_, up_, ui_;  // columns of L below the diagonal and of U above it, by step
  work_array<double> lx_, ux_, pivot_;
  work_array<double> dense_;  // the block, by columns, m x m
  work_array<int> swaps_;
  work_array<double> x_;                         // work row, then substitution
  work_array<int> mark_, stack_, place_, path_;  // search
};

}  // namespace tier
