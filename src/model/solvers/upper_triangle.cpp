// Half of a symmetric matrix; see the header.
#include "model/solvers/upper_triangle.h"

#include <algorithm>
#include <cmath>

#include "run/base/failure.h"

namespace keld {

/// On the way each row's lower entries are held against the entries that the rows above have for them, sum
/// against sum: nobody behind this step sees more than one triangle.
void keepUpperTriangle(CompressedSystem& system) {
  std::vector<int>& rowStart = system.rowStart;
  std::vector<int>& column = system.columnIndex;
  std::vector<double>& value = system.matrixValue;
  const int n = rowsOf(system);
  const auto size = static_cast<std::size_t>(n) + 1;
  std::vector<double> difference(size, 0.0), magnitude(size, 0.0);  // upper minus lower, by column
  int kept = 1;
  for (int row = 1; row <= n; ++row) {
    const int first = rowStart[row], end = rowStart[row + 1];
    rowStart[row] = kept;
    for (int p = first; p < end; ++p) {
      const int c = column[p];
      const double a = value[p];
      if (c < row) {
        difference[row] -= a;
        magnitude[row] += std::abs(a);
        continue;
      }
      if (c > row) {
        difference[c] += a;
        magnitude[c] += std::abs(a);
      }
      column[kept] = c;
      value[kept++] = a;
    }
    if (std::abs(difference[row]) > 1e-8 * magnitude[row]) {
      vFail(
          "\n !! Error !!  The stiffness matrix isn't symmetric in row %d, which the direct solver needs: "
          "check thickness and moduli of the elements there.\n",
          row);
    }
  }
  rowStart[size] = kept;
  column.resize(static_cast<std::size_t>(kept));
  value.resize(static_cast<std::size_t>(kept));
  column.shrink_to_fit();
  value.shrink_to_fit();
}

std::vector<int> rowsOfEntries(const CompressedSystem& triangle) {
  const int n = rowsOf(triangle);
  std::vector<int> rows;
  rows.reserve(triangle.columnIndex.size() - 1);
  for (int row = 1; row <= n; ++row) {
    rows.insert(rows.end(), static_cast<std::size_t>(triangle.rowStart[row + 1] - triangle.rowStart[row]),
                row);
  }
  return rows;
}

void subtractProduct(const CompressedSystem& triangle, std::span<const double> x, std::span<double> y) {
  const int n = rowsOf(triangle);
  for (int row = 1; row <= n; ++row) {
    const int diagonal = triangle.rowStart[row], end = triangle.rowStart[row + 1];
    const double own = x[row];
    double sum = triangle.matrixValue[diagonal] * own;
    for (int p = diagonal + 1; p < end; ++p) {
      const int c = triangle.columnIndex[p];
      const double a = triangle.matrixValue[p];
      sum += a * x[c];
      y[c] -= a * own;
    }
    y[row] -= sum;  // rows above have given their share, and none below will
  }
}

double trueResidual(const CompressedSystem& triangle, std::span<const double> load, std::span<const double> x,
                    std::span<double> residual) {
  const int n = rowsOf(triangle);
  std::copy_n(load.begin() + 1, n, residual.begin() + 1);
  subtractProduct(triangle, x, residual);
  double loadSquare = 0.0, residualSquare = 0.0;
  for (int row = 1; row <= n; ++row) {
    residualSquare += residual[row] * residual[row];
    loadSquare += load[row] * load[row];
  }
  if (loadSquare == 0.0) return residualSquare == 0.0 ? 0.0 : INFINITY;
  return std::sqrt(residualSquare / loadSquare);
}

}  // namespace keld
