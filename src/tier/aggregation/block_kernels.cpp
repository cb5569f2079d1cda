// Kernels of block rows. A thread owns whole rows, and a row is formed in one order,
// so the bits depend on nothing.
#include "tier/aggregation/block_kernels.h"

#include "tier/aggregation/block_lanes.h"
#include "tier/store/row_loop.h"

namespace tier::aggregation {

namespace {

/// sum += (block row i of A) x
template <class T, int R>
TIER_INLINE void add_row(const block_matrix<T>& a, int i, const T* x, T sign, lanes<T, R>& sum) {
  const int b = R > 0 ? R : a.rows;
  const T* block = a.block(a.start[i]);
  for (int k = a.start[i]; k < a.start[i + 1]; ++k) {
    const T* const xj = x + std::int64_t{a.column[k]} * b;
    for (int j = 0; j < b; ++j) sum.add_scaled(block + j * b, sign * xj[j]);
    block += b * b;
  }
}

/// sum += inverse(i) t
template <class T, int R>
TIER_INLINE void add_inverse(const from_zero<T>& inverse, int i, int b, const T* t, T beta,
                             lanes<T, R>& sum) {
  const T* const block = inverse.data() + std::int64_t{i} * b * b;
  for (int j = 0; j < b; ++j) sum.add_scaled(block + j * b, beta * t[j]);
}

template <class T>
struct product_kernel {
  const block_matrix<T>& a;
  const T *f, *x;  // f null: the product, else the residual
  T* y;
  int lo, hi;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : a.rows;
    for (int i = lo; i < hi; ++i) {
      lanes<T, R> sum(b);
      if (f) sum.load(f + std::int64_t{i} * b);
      add_row(a, i, x, f ? T(-1) : T(1), sum);
      sum.store(y + std::int64_t{i} * b);
    }
  }
};

template <class T>
struct first_step_kernel {
  const from_zero<T>& inverse;
  const T* f;
  T beta;
  T *d, *x;
  int b_, lo, hi;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : b_;
    for (int i = lo; i < hi; ++i) {
      lanes<T, R> z(b);
      add_inverse(inverse, i, b, f + std::int64_t{i} * b, beta, z);
      z.store(d + std::int64_t{i} * b);
      z.store(x + std::int64_t{i} * b);
    }
  }
};

template <class T>
struct smoothing_kernel {
  const block_matrix<T>& a;
  const from_zero<T>& inverse;
  const T *f, *x;
  T alpha, beta;
  T *d, *x_new;
  int lo, hi;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : a.rows;
    T t[most_block];
    for (int i = lo; i < hi; ++i) {
      const std::int64_t at = std::int64_t{i} * b;
      lanes<T, R> sum(b), step(b);
      sum.load(f + at);
      add_row(a, i, x, T(-1), sum);
      sum.store(t);
      if (alpha != T(0)) step.add_scaled(d + at, alpha);
      add_inverse(inverse, i, b, t, beta, step);
      step.store(d + at);
      step.add_scaled(x + at, T(1));
      step.store(x_new + at);
    }
  }
};

template <class T>
struct prolongation_kernel {
  const block_matrix<T>& p;
  const double* coarse;
  T* x;
  int lo, hi;

  template <int R>
  TIER_INLINE void rows() const {
    const int b = R > 0 ? R : p.rows, m = p.columns;
    for (int i = lo; i < hi; ++i) {
      lanes<T, R> sum(b);
      sum.load(x + std::int64_t{i} * b);
      for (int k = p.start[i]; k < p.start[i + 1]; ++k) {
        const T* const block = p.block(k);
        const double* const xc = coarse + std::int64_t{p.column[k]} * m;
        for (int j = 0; j < m; ++j) sum.add_scaled(block + j * b, static_cast<T>(xc[j]));
      }
      sum.store(x + std::int64_t{i} * b);
    }
  }
};

template <class T>
struct restriction_kernel {
  const block_matrix<T>& p;
  const transposed_index& index;
  const T* r;
  double* coarse;
  int lo, hi;

  template <int R, int M>
  TIER_INLINE void columns() const {
    const int b = R > 0 ? R : p.rows, m = M > 0 ? M : p.columns;
    for (int i = lo; i < hi; ++i)
      for (int first = 0; first < m; first += 6) add_columns<R, M>(i, b, m, first);
  }

  /// Six columns at a time stay in registers.
  template <int R, int M>
  TIER_INLINE void add_columns(int i, int b, int m, int first) const {
    lanes<T, R> sum[6] = {lanes<T, R>(b), lanes<T, R>(b), lanes<T, R>(b),
                          lanes<T, R>(b), lanes<T, R>(b), lanes<T, R>(b)};
    const int count = M == 6 ? 6 : m - first < 6 ? m - first : 6;
    for (int k = index.start[i]; k < index.start[i + 1]; ++k) {
      const T* const block = p.block(index.block[k]) + first * b;
      const T* const part = r + std::int64_t{index.row[k]} * b;
      for (int j = 0; j < count; ++j) sum[j].add_product(block + j * b, part);
    }
    for (int j = 0; j < count; ++j) coarse[std::int64_t{i} * m + first + j] = sum[j].sum();
  }

  template <int R>
  TIER_INLINE void rows() const {
    if (p.columns == 6) return columns<R, 6>();
    columns<R, 0>();
  }
};

// The loops over rows, once per kind of processor.
TIER_CLONES void run(const product_kernel<float>& k) { by_size(k.a.rows, k); }
TIER_CLONES void run(const product_kernel<double>& k) { by_size(k.a.rows, k); }
TIER_CLONES void run(const first_step_kernel<float>& k) { by_size(k.b_, k); }
TIER_CLONES void run(const first_step_kernel<double>& k) { by_size(k.b_, k); }
TIER_CLONES void run(const smoothing_kernel<float>& k) { by_size(k.a.rows, k); }
TIER_CLONES void run(const smoothing_kernel<double>& k) { by_size(k.a.rows, k); }
TIER_CLONES void run(const prolongation_kernel<float>& k) { by_size(k.p.rows, k); }
TIER_CLONES void run(const prolongation_kernel<double>& k) { by_size(k.p.rows, k); }
TIER_CLONES void run(const restriction_kernel<float>& k) { by_size(k.p.rows, k); }
TIER_CLONES void run(const restriction_kernel<double>& k) { by_size(k.p.rows, k); }

}  // namespace

template <class T>
void multiply(const block_matrix<T>& a, const T* x, T* y) {
  for_chunks(a.n, block_team(a.n), [&](const row_chunk& c) {
    run(product_kernel<T>{a, nullptr, x, y, c.lo - 1, c.hi});
  });
}

template <class T>
void residual(const block_matrix<T>& a, const T* f, const T* x, T* r) {
  for_chunks(a.n, block_team(a.n), [&](const row_chunk& c) {
    run(product_kernel<T>{a, f, x, r, c.lo - 1, c.hi});
  });
}

template <class T>
void first_step(const from_zero<T>& inverse, int n, int rows, const T* f, T beta, T* d, T* x) {
  for_chunks(n, block_team(n), [&](const row_chunk& c) {
    run(first_step_kernel<T>{inverse, f, beta, d, x, rows, c.lo - 1, c.hi});
  });
}

template <class T>
void smoothing_step(const block_matrix<T>& a, const from_zero<T>& inverse, const T* f, const T* x, T alpha,
                    T beta, T* d, T* x_new) {
  for_chunks(a.n, block_team(a.n), [&](const row_chunk& c) {
    run(smoothing_kernel<T>{a, inverse, f, x, alpha, beta, d, x_new, c.lo - 1, c.hi});
  });
}

template <class T>
void prolong(const block_matrix<T>& p, const double* coarse, T* x) {
  for_chunks(p.n, block_team(p.n), [&](const row_chunk& c) {
    run(prolongation_kernel<T>{p, coarse, x, c.lo - 1, c.hi});
  });
}

template <class T>
void restrict_to(const block_matrix<T>& p, const transposed_index& index, int coarse_points, const T* r,
                 double* coarse) {
  const int team = coarse_points < 64 ? 1 : block_team(p.n);
  for_chunks(coarse_points, team, [&](const row_chunk& c) {
    run(restriction_kernel<T>{p, index, r, coarse, c.lo - 1, c.hi});
  });
}

#define TIER_KERNELS(T)                                                                                   \
  template void multiply(const block_matrix<T>&, const T*, T*);                                           \
  template void residual(const block_matrix<T>&, const T*, const T*, T*);                                 \
  template void first_step(const from_zero<T>&, int, int, const T*, T, T*, T*);                           \
  template void smoothing_step(const block_matrix<T>&, const from_zero<T>&, const T*, const T*, T, T, T*, \
                               T*);                                                                       \
  template void prolong(const block_matrix<T>&, const double*, T*);                                       \
  template void restrict_to(const block_matrix<T>&, const transposed_index&, int, const T*, double*);
TIER_KERNELS(float)
TIER_KERNELS(double)
#undef TIER_KERNELS

}  // namespace tier::aggregation
