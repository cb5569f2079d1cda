// Products, residuals, smoothing steps and transfers over block rows, threaded.
// Called by the cycle and by the estimate of the largest eigenvalue. T is float or double.
#pragma once

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// y <- A x
template <class T>
void multiply(const block_matrix<T>& a, const T* x, T* y);

/// r <- f - A x
template <class T>
void residual(const block_matrix<T>& a, const T* f, const T* x, T* r);

/// x <- d <- beta D^-1 f, with the inverted diagonal blocks in `inverse`:
/// the first step of the smoother from zero.
template <class T>
void first_step(const from_zero<T>& inverse, int n, int rows, const T* f, T beta, T* d, T* x);

/// d <- alpha d + beta D^-1 (f - A x), x_new <- x + d. alpha 0 takes d as zero.
template <class T>
void smoothing_step(const block_matrix<T>& a, const from_zero<T>& inverse, const T* f, const T* x, T alpha,
                    T beta, T* d, T* x_new);

/// x <- x + P x_c
template <class T>
void prolong(const block_matrix<T>& p, const double* coarse, T* x);

/// Places of the blocks of P by coarse row, so that its transpose needs no values of its own.
struct transposed_index {
  from_zero<int> start;  // [0..coarse points]
  from_zero<int> row;    // fine point of a block
  from_zero<int> block;  // its place in P
};

/// coarse <- P^T r
template <class T>
void restrict_to(const block_matrix<T>& p, const transposed_index& index, int coarse_points, const T* r,
                 double* coarse);

}  // namespace tier::aggregation
