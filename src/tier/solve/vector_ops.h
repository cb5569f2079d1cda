// Vector kernels: copies, updates, scalar products and norms over 1-based vectors of length n, in parallel
// where the vector is long enough. Called by the driver, the accelerators and the coarsest-level solvers.
#pragma once

#include "tier/store/work_arrays.h"

namespace tier {

using vector = view<double>;
using const_vector = view<const double>;

void fill(int n, double value, vector x);
void copy(int n, const_vector x, vector y);
void scale(int n, double alpha, vector x);

/// y <- y + alpha x
void add_scaled(int n, double alpha, const_vector x, vector y);

/// y <- x + alpha y
void scale_and_add(int n, double alpha, const_vector x, vector y);

/// z <- x - y
void subtract(int n, const_vector x, const_vector y, vector z);

/// (x, y)
double dot(int n, const_vector x, const_vector y);

/// Euclidean length
double length(int n, const_vector x);

/// Scalar product of a part of two vectors; the serial piece of `dot`.
double partial_dot(const double* x, const double* y, int n);

}  // namespace tier
