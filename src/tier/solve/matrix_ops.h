// Matrix kernels on one level: products and residuals by row chunks.
// Called by the driver, the transfers, the accelerators and the iterative coarsest-level solvers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"
#include "tier/store/row_loop.h"

namespace tier {

/// Two neighbouring doubles; the smallest vector that every x86-64 has.
using pair = double __attribute__((vector_size(16)));

inline pair product_of_two(const int* ja, const double* a, const double* u1) {
  pair v;
  std::memcpy(&v, a, sizeof v);
  const pair x = {u1[ja[0] - 1], u1[ja[1] - 1]};
  return v * x;
}

/// start + sum of a_k u(ja_k) over `count` entries; u1 is the address of u(1). Four running sums hide the
/// latency of the additions; the order is fixed, so a row gives the same bits in every loop.
inline double row_sum(const int* ja, const double* a, const double* u1, std::int64_t count,
                      double start = 0.0) {
  pair s01 = {start, 0.0}, s23 = {0.0, 0.0};
  std::int64_t k = 0;
  for (; k + 4 <= count; k += 4) {
    s01 += product_of_two(ja + k, a + k, u1);
    s23 += product_of_two(ja + k + 2, a + k + 2, u1);
  }
  double s0 = s01[0];
  for (; k < count; ++k) s0 += a[k] * u1[ja[k] - 1];
  return (s0 + s01[1]) + (s23[0] + s23[1]);
}

/// Asks for what stands some rows further on, in loops over rows that follow each other. Without it long rows
/// wait for memory; short ones come in time by themselves. (A function of prefetches alone that isn't inlined
/// at once passes for one without effect, and its calls are removed.)
[[gnu::always_inline]] inline void fetch_ahead(const int* ja, const double* a, int count,
                                               bool descending = false) {
  constexpr int shortest = 16, line = 64;
  const int distance = descending ? -400 : 400;
  if (count < shortest) return;
  for (int k = 0; k < count; k += line / static_cast<int>(sizeof(double)))
    __builtin_prefetch(a + k + distance, 0, 0);
  for (int k = 0; k < count; k += line / static_cast<int>(sizeof(int)))
    __builtin_prefetch(ja + k + distance, 0, 0);
}

/// The row at a place of the store times u.
inline double row_product(const level& l, int place, const double* u1) {
  const int first = l.ia[place], count = l.ia[place + 1] - first;
  fetch_ahead(&l.ja[first], &l.a[first], count);
  return row_sum(&l.ja[first], &l.a[first], u1, count);
}

/// Places of the store for a thread of the team: about as many entries for each.
inline row_chunk places_of(const level& l, const row_chunk& c) {
  if (c.team == 1) return c;
  const int* const ia = l.ia.data();
  const auto first = [&](int tid) {
    const std::int64_t before = std::int64_t{l.entries()} * tid / c.team;
    return static_cast<int>(std::lower_bound(ia, ia + l.n, before + 1) - ia) + 1;
  };
  return {first(c.tid), c.tid == c.team - 1 ? l.n : first(c.tid + 1) - 1, c.tid, c.team};
}

/// body(i, (A u)_i) for the thread's share of the rows.
template <class Body>
inline void for_row_products(const level& l, const row_chunk& c, const double* u1, Body body) {
  const row_chunk mine = places_of(l, c);
  if (!l.order) {
    for (int i = mine.lo; i <= mine.hi; ++i) body(i, row_product(l, i, u1));
  } else {
    for (int place = mine.lo; place <= mine.hi; ++place) body(l.order[place], row_product(l, place, u1));
  }
}

/// y <- A x
void multiply(const level& l, const_vector x, vector y);

/// y <- A x, returns (y, v).
double multiply_and_dot(const level& l, const_vector x, vector y, const_vector v);

/// r <- f - A u
void residual(const level& l, const_vector f, const_vector u, vector r);

}  // namespace tier
