// The upper triangle of a symmetric system in compressed rows, and products with the whole matrix by it.
// Called by the direct solver, whose library and whose refinement need no more.
#pragma once

#include <span>
#include <vector>

#include "model/model_tables.h"

namespace keld {

/// Closes the rows up over their upper triangle, in place and in the order they had, diagonal first. A matrix
/// that isn't symmetric ends the run.
void keepUpperTriangle(CompressedSystem& system);

/// Row of each entry, from 0 on: what the compressed rows say in n + 1 numbers, for a library that takes the
/// matrix entry by entry.
std::vector<int> rowsOfEntries(const CompressedSystem& triangle);

/// Unknowns of the system.
inline int rowsOf(const CompressedSystem& system) { return static_cast<int>(system.rowStart.size()) - 2; }

/// y = y - A x, both [1..n], of the symmetric matrix whose upper triangle is given, diagonal first in a row.
void subtractProduct(const CompressedSystem& triangle, std::span<const double> x, std::span<double> y);

/// residual = f - A x, all [1..n]; returns ||residual|| / ||f||, 0 where both are 0.
double trueResidual(const CompressedSystem& triangle, std::span<const double> load, std::span<const double> x,
                    std::span<double> residual);

}  // namespace keld
