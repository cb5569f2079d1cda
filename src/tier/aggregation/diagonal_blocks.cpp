// Small symmetric blocks.
#include "tier/aggregation/diagonal_blocks.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tier::aggregation {

namespace {

constexpr double least_share = 1e-13;

double mean_diagonal(int b, const double* block) {
  double trace = 0.0;
  for (int i = 0; i < b; ++i) trace += std::abs(block[i * b + i]);
  return trace > 0.0 ? trace / b : 1.0;
}

}  // namespace

void complete_diagonal(int b, double* block) {
  const double mean = mean_diagonal(b, block);
  for (int i = 0; i < b; ++i)
    if (!(block[i * b + i] > least_share * mean * b)) block[i * b + i] = mean;
}

// L by columns in place of the lower triangle, then inverse = L^-T L^-1 column by column.
bool invert_block(int b, const double* block, double* inverse) {
  const double mean = mean_diagonal(b, block);
  std::array<double, most_block * most_block> lower;
  double* const l = lower.data();
  std::copy_n(block, b * b, l);
  bool regular = true;
  for (int j = 0; j < b; ++j) {
    double pivot = l[j * b + j];
    for (int k = 0; k < j; ++k) pivot -= l[k * b + j] * l[k * b + j];
    const bool good = pivot > least_share * block[j * b + j] && pivot > 0.0;
    regular = regular && good;
    l[j * b + j] = std::sqrt(good ? pivot : mean);
    if (!good)
      for (int k = 0; k < j; ++k) l[k * b + j] = 0.0;
    for (int i = j + 1; i < b; ++i) {
      double sum = l[j * b + i];
      for (int k = 0; k < j; ++k) sum -= l[k * b + i] * l[k * b + j];
      l[j * b + i] = good ? sum / l[j * b + j] : 0.0;
    }
  }
  for (int c = 0; c < b; ++c) {
    double* const x = inverse + c * b;
    for (int i = 0; i < b; ++i) {
      double sum = i == c ? 1.0 : 0.0;
      for (int k = c; k < i; ++k) sum -= l[k * b + i] * x[k];
      x[i] = i < c ? 0.0 : sum / l[i * b + i];
    }
    for (int i = b - 1; i >= 0; --i) {
      double sum = x[i];
      for (int k = i + 1; k < b; ++k) sum -= l[i * b + k] * x[k];
      x[i] = sum / l[i * b + i];
    }
  }
  return regular;
}

}  // namespace tier::aggregation
