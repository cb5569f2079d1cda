// The smoother: Chebyshev polynomials of D^-1 A with block diagonals, and the eigenvalue bound they need.
// Called by set-up (bound) and by the cycle.
#pragma once

#include "tier/aggregation/block_level.h"

namespace tier::aggregation {

/// Degree and interval [low, high] of the polynomial. Saad, Iterative Methods for Sparse Linear Systems, 2nd
/// ed., algorithm 12.1.
struct polynomial {
  int degree;
  double low, high;
};

/// x of the level from its f, starting from zero; and from the x that is there. The same polynomial before
/// and behind the coarse level makes a symmetric cycle. Changes y and d.
template <class T>
void smooth_from_zero(block_level<T>& l, const polynomial& p);
template <class T>
void smooth(block_level<T>& l, const polynomial& p);

/// Largest eigenvalue of D^-1 A from below: the largest Ritz value of 12 steps of Lanczos, run as conjugate
/// gradients with D on a fixed random vector (Saad, section 6.7.3). Changes the vectors of the level.
template <class T>
double largest_eigenvalue(block_level<T>& l);

/// Largest eigenvalue of a symmetric tridiagonal matrix by bisection: diagonal [0..n-1], off [1..n-1].
double largest_of_tridiagonal(int n, const double* diagonal, const double* off);

}  // namespace tier::aggregation
