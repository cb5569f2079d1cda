// First guesses.
#include "tier/call/first_guess.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "tier/store/input_checks.h"

namespace tier {

namespace {

constexpr int zero = 1, one = 2, random_vector = 3;

double seed_of(int digits) {
  double seed = digits;
  while (seed >= 1.0) seed *= 0.1;
  return seed == 0.0 ? 0.72815 : seed;
}

void fill_random(double seed, int n, view<double> u) {
  std::mt19937_64 generator(static_cast<std::uint64_t>(std::llround(seed * 1e15)));
  double squares = 0.0;
  for (int i = 1; i <= n; ++i) {
    u[i] = std::ldexp(static_cast<double>(generator() >> 11) + 0.5, -53);  // in (0,1), the same everywhere
    squares += u[i] * u[i];
  }
  const double factor = 1.0 / std::sqrt(squares);
  for (int i = 1; i <= n; ++i) u[i] *= factor;
}

}  // namespace

int first_guess_kind(int ifirst) {
  const int kind = ifirst <= 0 ? 0 : digits_of<2>(ifirst)[1];
  return kind <= random_vector ? kind : 0;
}

void first(int ifirst, int n, view<double> u) {
  switch (first_guess_kind(ifirst)) {
    case zero:
      std::fill_n(u.data(), n, 0.0);
      break;
    case one:
      std::fill_n(u.data(), n, 1.0);
      break;
    case random_vector:
      fill_random(seed_of(digits_of<2>(ifirst)[2]), n, u);
      break;
    default:
      break;
  }
}

}  // namespace tier
