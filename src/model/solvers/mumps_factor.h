// The library of the direct path, MUMPS, in double or single precision: analysis, factor, solution, end.
// Called by the direct solver, which chooses the precision and words what goes wrong.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "model/model_tables.h"
#include "run/base/column.h"

namespace keld {

/// Thrown where a step of the library hasn't done what it should.
struct MumpsFault {
  const char* step;
  int code, detail;  // INFOG(1), INFOG(2)
  const char* meaning() const;
  bool ofDisk() const { return code == -90; }
};

/// LDL^T factor of a symmetric positive definite matrix, from its pattern on until the object goes. Real is
/// double or float. MUMPS: Amestoy, Duff, L'Excellent, Koster, SIAM J. Matrix Anal. Appl. 23 (2001) 15-41.
/// PORD ordering: Schulze, BIT 41 (2001) 800-841.
template <class Real>
class MumpsFactor {
 public:
  /// Orders the unknowns by the pattern alone; columnIndex of the triangle must stay where it is until the
  /// factor is there. rowBlock [1..n]: block of each row, so that the ordering works on the graph of blocks.
  MumpsFactor(const CompressedSystem& triangle, const Column<int>& rowBlock);
  ~MumpsFactor();
  MumpsFactor(const MumpsFactor&) = delete;
  MumpsFactor& operator=(const MumpsFactor&) = delete;

  /// Estimates of the analysis, megabytes: with the factor in memory and on disk.
  int megabytesInMemory() const;
  int megabytesOnDisk() const;

  /// Lets the factor go to disk, below `folder`, whose path has at most longestFolder bytes.
  void putOnDisk(const std::string& folder);
  static int longestFolder();

  /// Factors; value, [0..entries - 1], has the entries in the order of the triangle. Returns the number of
  /// negative pivots: 0 for a positive definite matrix.
  int factor(std::span<Real> value);

  /// Solves in place for one or more right-hand sides, n numbers each, from 0.
  void solve(std::span<Real> unknowns);

  /// Megabytes of the library's own arrays during the factorisation.
  int megabytesUsed() const;

 private:
  struct Instance;  // the library's own record

  void defineStructure(const CompressedSystem& triangle, const Column<int>& rowBlock);
  void analyse();
  void runJob(int job, const char* step);

  std::unique_ptr<Instance> instance_;
  Column<int> rowIndex_;                   // row of each entry; needed until the factor is there
  Column<int> blockStart_, blockUnknown_;  // rows sorted by block, until then, too
};

}  // namespace keld
