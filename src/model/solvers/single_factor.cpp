// Scaling and rounding around the single-precision library; see the header.
#include "model/solvers/single_factor.h"

#include <algorithm>
#include <cmath>

#include "model/solvers/upper_triangle.h"

namespace keld {

int SingleFactor::factor(const CompressedSystem& triangle) {
  const int n = rowsOf(triangle);
  scale_.assign(n, 0.0);
  for (int row = 1; row <= n; ++row)
    scale_[row] = 1.0 / std::sqrt(triangle.matrixValue[triangle.rowStart[row]]);
  Column<float> value(triangle.matrixValue.rows());
  for (int row = 1; row <= n; ++row) {
    for (int p = triangle.rowStart[row]; p < triangle.rowStart[row + 1]; ++p) {
      value[p] = static_cast<float>(triangle.matrixValue[p] * scale_[row] * scale_[triangle.columnIndex[p]]);
    }
  }
  return library_.factor(value);
}

/// Each right-hand side is divided by its largest number: what is left of it late in a refinement is too
/// small for the range of single precision.
void SingleFactor::solve(std::span<const Pair> pairs) {
  const int n = scale_.rows();
  work_.resize(pairs.size() * static_cast<std::size_t>(n));
  std::vector<double> unit(pairs.size(), 0.0);
  float* own = work_.data();
  for (std::size_t k = 0; k < pairs.size(); ++k, own += n) {
    for (int i = 1; i <= n; ++i) unit[k] = std::max(unit[k], std::abs(pairs[k].r[i] * scale_[i]));
    const double inverse = unit[k] > 0.0 ? 1.0 / unit[k] : 0.0;
    for (int i = 1; i <= n; ++i) own[i - 1] = static_cast<float>(pairs[k].r[i] * scale_[i] * inverse);
  }
  library_.solve(work_);
  own = work_.data();
  for (std::size_t k = 0; k < pairs.size(); ++k, own += n)
    for (int i = 1; i <= n; ++i) pairs[k].z[i] = unit[k] * scale_[i] * static_cast<double>(own[i - 1]);
}

}  // namespace keld
