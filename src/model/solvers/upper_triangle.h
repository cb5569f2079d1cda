// The upper triangle of a symmetric system in compressed rows, and products with the whole matrix by it.
// Called by the direct solver, whose library and whose refinement need no more.
#pragma once

#include "model/model_tables.h"
#include "run/base/column.h"

namespace keld {

/// Closes the rows up over their upper triangle, in place and in the order they had, diagonal first. A matrix
/// that isn't symmetric ends the run.
void keepUpperTriangle(CompressedSystem& system);

/// Row of each entry: what the compressed rows say in n + 1 numbers, for a library that takes the
/// matrix entry by entry.
Column<int> rowsOfEntries(const CompressedSystem& triangle);

/// Unknowns of the system.
inline int rowsOf(const CompressedSystem& system) { return system.rowStart.rows() - 1; }

/// y = y - A x, both [1..n], of the symmetric matrix whose upper triangle is given, diagonal first in a row.
void subtractProduct(const CompressedSystem& triangle, const Column<double>& x, Column<double>& y);

/// residual = f - A x, all [1..n]; returns ||residual|| / ||f||, 0 where both are 0.
double trueResidual(const CompressedSystem& triangle, const Column<double>& load, const Column<double>& x,
                    Column<double>& residual);

}  // namespace keld
