// A factor in single precision as a preconditioner in double precision.
// Called by the direct solver for large systems, or where memory is short.
#pragma once

#include <span>
#include <vector>

#include "model/model_tables.h"
#include "model/solvers/mumps_factor.h"
#include "run/base/column.h"

namespace keld {

/// Factor of the matrix scaled to a unit diagonal, S A S, rounded to single precision. A failure of the
/// library is thrown as MumpsFault.
class SingleFactor {
 public:
  /// The analysis alone: what it says of memory is known from here on.
  SingleFactor(const CompressedSystem& triangle, const Column<int>& rowBlock)
      : library_(triangle, rowBlock) {}

  /// Returns the number of negative pivots.
  int factor(const CompressedSystem& triangle);

  /// A right-hand side and the place of its solution, both [1..n].
  struct Pair {
    const Column<double>& r;
    Column<double>& z;
  };

  /// z = S (S A S)^-1 S r for each pair, all in one pass over the factor.
  void solve(std::span<const Pair> pairs);

  MumpsFactor<float>& library() { return library_; }
  const MumpsFactor<float>& library() const { return library_; }

 private:
  MumpsFactor<float> library_;
  Column<double> scale_;     // [1..n] S
  std::vector<float> work_;  // n of each pair, from 0
};

}  // namespace keld
