// Vector work on levels: scalar products by fixed pieces, so that the bits don't depend on the threads.
// Called by the estimate of eigenvalues and by the K-cycle.
#pragma once

#include <cstdint>

#include "tier/aggregation/block_matrix.h"

namespace tier::aggregation {

/// (x, y), summed in double.
template <class T>
double dot(std::int64_t n, const T* x, const T* y);

/// y <- y + alpha x
template <class T>
void add_multiple(std::int64_t n, T alpha, const T* x, T* y);

/// y <- x + alpha y
template <class T>
void add_to_multiple(std::int64_t n, T alpha, const T* x, T* y);

}  // namespace tier::aggregation
