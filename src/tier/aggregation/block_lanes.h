// A column of a block in vector registers: what the kernels of blocks are made of.
// Everything here is inlined, so that it takes the instructions of the kernel around it.
#pragma once

#include <cstring>

#include "tier/aggregation/block_matrix.h"

// The library holds the loops over rows for several kinds of processor and takes the best when it is loaded;
// instrumented builds and other compilers hold one.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define TIER_CLONES [[gnu::target_clones("default", "arch=x86-64-v3", "arch=x86-64-v4")]]
#else
#define TIER_CLONES
#endif
#define TIER_INLINE [[gnu::always_inline]] inline

namespace tier::aggregation {

/// Lanes that a column of R rows takes: its own and those that a wide load takes along.
constexpr int width_of(int rows) { return rows == 6 ? 8 : rows == 3 ? 4 : rows; }

/// R numbers; R 0: as many as given, up to most_block. A load reads width_of(R) numbers.
template <class T, int R>
class lanes {
  static constexpr int width = width_of(R);
  typedef T wide __attribute__((vector_size(static_cast<int>(sizeof(T)) * width)));

 public:
  TIER_INLINE explicit lanes(int) : v_{} {}
  TIER_INLINE void load(const T* p) { std::memcpy(&v_, p, sizeof v_); }
  TIER_INLINE void add_scaled(const T* p, T s) {
    wide x;
    std::memcpy(&x, p, sizeof x);
    v_ += x * s;
  }
  TIER_INLINE void add_product(const T* p, const T* q) {
    wide x, y;
    std::memcpy(&x, p, sizeof x);
    std::memcpy(&y, q, sizeof y);
    v_ += x * y;
  }
  TIER_INLINE void scale(T s) { v_ *= s; }
  TIER_INLINE void store(T* p) const { std::memcpy(p, &v_, R * sizeof(T)); }
  TIER_INLINE void store_wide(T* p) const { std::memcpy(p, &v_, sizeof v_); }
  TIER_INLINE T sum() const {
    T part[std::size_t{width}], s = 0;
    std::memcpy(part, &v_, sizeof v_);
    for (int i = 0; i < R; ++i) s += part[i];
    return s;
  }

 private:
  wide v_;
};

template <class T>
class lanes<T, 0> {
 public:
  TIER_INLINE explicit lanes(int n) : n_(n) {}
  TIER_INLINE void load(const T* p) {
    for (int i = 0; i < n_; ++i) v_[i] = p[i];
  }
  TIER_INLINE void add_scaled(const T* p, T s) {
    for (int i = 0; i < n_; ++i) v_[i] += p[i] * s;
  }
  TIER_INLINE void add_product(const T* p, const T* q) {
    for (int i = 0; i < n_; ++i) v_[i] += p[i] * q[i];
  }
  TIER_INLINE void scale(T s) {
    for (int i = 0; i < n_; ++i) v_[i] *= s;
  }
  TIER_INLINE void store(T* p) const {
    for (int i = 0; i < n_; ++i) p[i] = v_[i];
  }
  TIER_INLINE void store_wide(T* p) const { store(p); }
  TIER_INLINE T sum() const {
    T s = 0;
    for (int i = 0; i < n_; ++i) s += v_[i];
    return s;
  }

 private:
  int n_;
  T v_[most_block] = {};
};

/// A block of b x b numbers in double.
template <class T>
TIER_INLINE void widen(const T* block, int b, double* to) {
  for (int i = 0; i < b * b; ++i) to[i] = block[i];
}

/// Calls kernel.rows<R>() with R the number of rows of a block where there is a kernel for it, else 0.
template <class Kernel>
TIER_INLINE void by_size(int rows, const Kernel& kernel) {
  switch (rows) {
    case 6:
      return kernel.template rows<6>();
    case 3:
      return kernel.template rows<3>();
    case 2:
      return kernel.template rows<2>();
    case 1:
      return kernel.template rows<1>();
    default:
      return kernel.template rows<0>();
  }
}

}  // namespace tier::aggregation
