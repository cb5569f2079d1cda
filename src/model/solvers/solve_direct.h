// The direct path: the reduced system goes to the sparse Cholesky solver MUMPS, step for step.
// Called by the analysis driver where solverChoice is 2; the factor serves every further pass.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model/model_tables.h"

namespace keld {

/// Megabytes (10^6 bytes, as MUMPS counts) that the factorisation may take in memory: 0.9 x available
/// physical memory, truncated; the greatest integer where that is larger or unknown (all bits set).
int inCoreLimit(std::uint64_t availableBytes);

/// Folder for a factor on disk: the environment's MUMPS_OOC_TMPDIR, else the folder of the job.
std::string scratchFolder(const std::string& baseName);

/// LDL^T factor of a symmetric positive definite matrix, kept until the object goes. Any failure of the
/// library, a matrix that isn't symmetric, not positive definite or singular to
/// working precision, and a residual that isn't small end the run with a message that gives codes and
/// figures. MUMPS: Amestoy, Duff, L'Excellent, Koster, SIAM J. Matrix Anal. Appl. 23 (2001) 15-41. PORD
/// ordering: Schulze, BIT 41 (2001) 800-841.
class DirectSolver {
 public:
  /// Factors at once. Of `system` it keeps the upper triangle alone, rows in the order they had: rowStart,
  /// columnIndex and matrixValue shrink in place, and must live as long as the solver.
  /// rowBlock     [1..n] block of each row, any numbers from 1; rows of a block have the same neighbours
  ///              beside a few, so that the ordering works on the graph of the blocks
  /// memoryLimit  megabytes; where MUMPS's own estimate is larger the factor goes to disk, below `folder`
  DirectSolver(CompressedSystem& system, std::span<const int> rowBlock, int memoryLimit,
               const std::string& folder);
  ~DirectSolver();
  DirectSolver(const DirectSolver&) = delete;
  DirectSolver& operator=(const DirectSolver&) = delete;

  /// Solves for the system's rowLoad into unknowns [1..n] and returns the true residual ||f - A u|| / ||f||,
  /// 0 for a zero load. A residual above `residualLimit` ends the run.
  double solve(std::span<double> unknowns);

  /// Whether the factor lies on disk.
  bool outOfCore() const { return outOfCore_; }

  /// Megabytes of the library's own arrays during the factorisation.
  int megabytesUsed() const;

  static constexpr double residualLimit = 1e-6;
  static constexpr double growthLimit =
      1e14;  // 2e10 for a wall of 1/2000 of its length, above 1e16 for loose pieces

 private:
  struct Instance;  // the library's own record

  void keepUpperTriangle();
  void defineStructure(std::span<const int> rowBlock);
  void reorder();
  void limitMemory(int memoryLimit, const std::string& folder);
  void factor();
  void checkRegular();
  void solveInPlace(std::span<double> unknowns);
  void runJob(int job, const char* step);
  double relativeResidual(std::span<const double> unknowns) const;

  CompressedSystem& system_;
  const int n_;
  std::vector<int> rowIndex_;                   // row of each entry, from 0; needed until the factor is there
  std::vector<int> blockStart_, blockUnknown_;  // rows sorted by block
  bool outOfCore_ = false;
  std::unique_ptr<Instance> instance_;
};

}  // namespace keld
