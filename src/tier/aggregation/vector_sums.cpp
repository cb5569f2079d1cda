// Vector work by pieces.
#include "tier/aggregation/vector_sums.h"

#include <algorithm>

#include "tier/store/numbered.h"
#include "tier/store/row_loop.h"

namespace tier::aggregation {

namespace {

/// A vector falls into at most so many pieces, whatever the team.
constexpr int pieces = 64;

struct piece {
  std::int64_t first, last;
};
piece piece_of(std::int64_t n, int k) { return {n * k / pieces, n * (k + 1) / pieces}; }

/// Eight running sums, so that the additions don't wait for each other.
template <class T>
double sum_of_piece(const T* x, const T* y, piece part) {
  double s[8] = {};
  std::int64_t i = part.first;
  for (; i + 8 <= part.last; i += 8)
    for (int k = 0; k < 8; ++k) s[k] += static_cast<double>(x[i + k]) * static_cast<double>(y[i + k]);
  for (; i < part.last; ++i) s[0] += static_cast<double>(x[i]) * static_cast<double>(y[i]);
  return ((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7]));
}

template <class Body>
void for_pieces(std::int64_t n, Body body) {
  for_chunks(pieces, vector_team(n), [&](const row_chunk& c) {
    for (int k = c.lo - 1; k < c.hi; ++k) body(k, piece_of(n, k));
  });
}

}  // namespace

template <class T>
double dot(std::int64_t n, const T* x, const T* y) {
  numbered<double, pieces> part;
  for_pieces(n, [&](int k, piece p) { part[k] = sum_of_piece(x, y, p); });
  double sum = 0.0;
  for (const double s : part) sum += s;
  return sum;
}

template <class T>
void add_multiple(std::int64_t n, T alpha, const T* x, T* y) {
  for_pieces(n, [=](int, piece p) {
    for (std::int64_t i = p.first; i < p.last; ++i) y[i] += alpha * x[i];
  });
}

template <class T>
void add_to_multiple(std::int64_t n, T alpha, const T* x, T* y) {
  for_pieces(n, [=](int, piece p) {
    for (std::int64_t i = p.first; i < p.last; ++i) y[i] = x[i] + alpha * y[i];
  });
}

template double dot(std::int64_t, const float*, const float*);
template double dot(std::int64_t, const double*, const double*);
template void add_multiple(std::int64_t, float, const float*, float*);
template void add_multiple(std::int64_t, double, const double*, double*);
template void add_to_multiple(std::int64_t, float, const float*, float*);
template void add_to_multiple(std::int64_t, double, const double*, double*);

}  // namespace tier::aggregation
