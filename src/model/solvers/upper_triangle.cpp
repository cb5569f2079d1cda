// Half of a symmetric matrix; see the header.
#include "model/solvers/upper_triangle.h"

#include <algorithm>
#include <cmath>

#include "run/base/failure.h"

namespace keld {

/// On the way each row's lower entries are held against the entries that the rows above have for them, sum
/// against sum: nobody behind this step sees more than one triangle.
void keepUpperTriangle(CompressedSystem& system) {
  Column<int>& rowStart = system.rowStart;
  Column<int>& column = system.columnIndex;
  Column<double>& value = system.matrixValue;
  const int n = rowsOf(system);
  Column<double> difference(n, 0.0), magnitude(n, 0.0);  // upper minus lower, by column
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
  rowStart[n + 1] = kept;
  column.resize(kept - 1);
  value.resize(kept - 1);
  column.shrink_to_fit();
  value.shrink_to_fit();
}

Column<int> rowsOfEntries(const CompressedSystem& triangle) {
  const int n = rowsOf(triangle);
  Column<int> rows(triangle.columnIndex.rows());
  for (int row = 1; row <= n; ++row)
    std::fill(rows.origin() + triangle.rowStart[row], rows.origin() + triangle.rowStart[row + 1], row);
  return rows;
}

void subtractProduct(const CompressedSystem& triangle, const Column<double>& x, Column<double>& y) {
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

double trueResidual(const CompressedSystem& triangle, const Column<double>& load, const Column<double>& x,
                    Column<double>& residual) {
  const int n = rowsOf(triangle);
  std::copy_n(load.begin(), n, residual.begin());
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
