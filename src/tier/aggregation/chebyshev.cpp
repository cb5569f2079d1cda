// Chebyshev smoothing and its bound.
#include "tier/aggregation/chebyshev.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "tier/aggregation/vector_sums.h"

namespace tier::aggregation {

namespace {

/// The steps behind the first one: d <- rho rho' d + (2 rho / delta) D^-1 (f - A x), x <- x + d.
template <class T>
void further_steps(block_level<T>& l, const polynomial& p, int done) {
  const double theta = 0.5 * (p.high + p.low), delta = 0.5 * (p.high - p.low), sigma = theta / delta;
  double rho = 1.0 / sigma;
  for (int step = done; step < p.degree; ++step) {
    const double next = 1.0 / (2.0 * sigma - rho);
    const bool first = step == 0;
    const double alpha = first ? 0.0 : next * rho, beta = first ? 1.0 / theta : 2.0 * next / delta;
    smoothing_step(l.a, l.inverse, l.f.data(), l.x.data(), static_cast<T>(alpha), static_cast<T>(beta),
                   l.d.data(), l.y.data());
    l.x.swap(l.y);
    if (!first) rho = next;
  }
}

/// Numbers in (-1, 1) that depend on nothing but the place.
double random_number(std::uint64_t place) {
  std::uint64_t z = (place + 1) * 0x9e3779b97f4a7c15u;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-52 - 1.0;
}

/// Eigenvalues below x.
int count_below(int n, const double* diagonal, const double* off, double x) {
  int count = 0;
  double q = 1.0;
  for (int i = 0; i < n; ++i) {
    q = diagonal[i] - x - (i > 0 ? off[i] * off[i] / q : 0.0);
    if (q == 0.0) q = 1e-300;
    count += q < 0.0;
  }
  return count;
}

}  // namespace

double largest_of_tridiagonal(int n, const double* diagonal, const double* off) {
  double low = diagonal[0], high = diagonal[0];
  for (int i = 0; i < n; ++i) {
    const double radius = (i > 0 ? std::abs(off[i]) : 0.0) + (i + 1 < n ? std::abs(off[i + 1]) : 0.0);
    low = std::max(low, diagonal[i]);
    high = std::max(high, diagonal[i] + radius);
  }
  for (int step = 0; step < 60 && high - low > 1e-6 * std::abs(high); ++step) {
    const double middle = 0.5 * (low + high);
    (count_below(n, diagonal, off, middle) == n ? high : low) = middle;
  }
  return high;
}

template <class T>
void smooth_from_zero(block_level<T>& l, const polynomial& p) {
  const double theta = 0.5 * (p.high + p.low);
  first_step(l.inverse, l.a.n, l.a.rows, l.f.data(), static_cast<T>(1.0 / theta), l.d.data(), l.x.data());
  further_steps(l, p, 1);
}

template <class T>
void smooth(block_level<T>& l, const polynomial& p) {
  further_steps(l, p, 0);
}

template <class T>
double largest_eigenvalue(block_level<T>& l) {
  constexpr std::size_t steps = 12;
  constexpr double exhausted = 1e-10;
  const int n = l.unknowns();
  T *const r = l.f.data(), *const z = l.x.data(), *const p = l.d.data(), *const q = l.y.data();
  for (int i = 0; i < n; ++i) r[i] = static_cast<T>(random_number(static_cast<std::uint64_t>(i)));
  std::array<double, steps> diagonal{}, off{};
  double before = 0.0, first = 0.0, alpha = 1.0;
  std::size_t done = 0;
  for (; done < steps; ++done) {
    first_step(l.inverse, l.a.n, l.a.rows, r, T(1), q, z);
    const double rho = dot(n, r, z);
    if (done == 0) first = rho;
    if (!(rho > exhausted * exhausted * first) || !(rho > 0.0)) break;
    const double beta = done > 0 ? rho / before : 0.0;
    if (done > 0) {
      diagonal[done] = beta / alpha;
      off[done] = std::sqrt(beta) / alpha;
      add_to_multiple(n, static_cast<T>(beta), z, p);
    } else {
      std::copy_n(z, n, p);
    }
    multiply(l.a, p, q);
    const double along = dot(n, p, q);
    if (!(along > 0.0)) break;
    alpha = rho / along;
    diagonal[done] += 1.0 / alpha;
    add_multiple(n, static_cast<T>(-alpha), q, r);
    before = rho;
  }
  return done > 0 ? largest_of_tridiagonal(static_cast<int>(done), diagonal.data(), off.data()) : 1.0;
}

template void smooth_from_zero(block_level<float>&, const polynomial&);
template void smooth_from_zero(block_level<double>&, const polynomial&);
template void smooth(block_level<float>&, const polynomial&);
template void smooth(block_level<double>&, const polynomial&);
template double largest_eigenvalue(block_level<float>&);
template double largest_eigenvalue(block_level<double>&);

}  // namespace tier::aggregation
