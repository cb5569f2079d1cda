// The direct path: the reduced system goes to the sparse Cholesky solver MUMPS, in double precision, or in
// single precision and then refined, where the system is large or memory short.
// Called by the analysis driver where solverChoice is 2; the factor serves every further pass.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "model/model_tables.h"
#include "model/solvers/conjugate_gradients.h"
#include "model/solvers/mumps_factor.h"
#include "model/solvers/single_factor.h"
#include "run/base/column.h"

namespace keld {

/// Megabytes (10^6 bytes, as MUMPS counts) that the factorisation may take in memory: 0.9 x available
/// physical memory, truncated; the greatest integer where that is larger or unknown (all bits set).
int inCoreLimit(std::uint64_t availableBytes);

/// Folder for a factor on disk: the environment's MUMPS_OOC_TMPDIR, else the folder of the job.
std::string scratchFolder(const std::string& baseName);

/// In which precision a matrix is factored. By size: in single precision from DirectSolver::singleFrom
/// unknowns on, or where a factor in double precision is too large for the memory.
enum class FactorPrecision { bySize, inDouble, inSingle };

/// Solutions with the factor of a symmetric positive definite matrix, kept until the object goes. A factor in
/// single precision is the preconditioner of conjugate gradients in double; where it can't be made or they
/// don't come to an end in `mostSteps` steps, or lag behind, the log says so and a factor in double precision
/// takes its place. Any failure of that, a matrix that isn't symmetric, not positive definite or singular to
/// working precision, and a residual that isn't small end the run with a message that gives codes and
/// figures.
class DirectSolver {
 public:
  /// Factors at once. Of `system` it keeps the upper triangle alone, rows in the order they had: rowStart,
  /// columnIndex and matrixValue shrink in place, and must live as long as the solver.
  /// rowBlock     [1..n] block of each row, any numbers from 1; rows of a block have the same neighbours
  ///              beside a few, so that the ordering works on the graph of the blocks
  /// memoryLimit  megabytes; where MUMPS's own estimate is larger the factor goes to disk, below `folder`
  DirectSolver(CompressedSystem& system, const Column<int>& rowBlock, int memoryLimit,
               const std::string& folder, FactorPrecision precision = FactorPrecision::bySize);

  /// Solves for the system's rowLoad into unknowns [1..n] and returns the true residual ||f - A u|| / ||f||,
  /// 0 for a zero load. A residual above `residualLimit` ends the run.
  double solve(Column<double>& unknowns);

  /// Steps of the last solution: 1, or those of its refinement.
  int steps() const { return steps_; }

  /// Whether the factor is in single precision, and whether it lies on disk.
  bool inSingle() const { return inSingle_ != nullptr; }
  bool outOfCore() const { return outOfCore_; }

  /// Megabytes of the library's own arrays during the factorisation.
  int megabytesUsed() const;

  static constexpr double residualLimit = 1e-6;
  static constexpr double growthLimit =
      1e14;  // 2e10 for a wall of 1/2000 of its length, above 1e16 for loose pieces
  static constexpr int singleFrom = 500000;       // unknowns
  static constexpr int mostSteps = 30;            // of a refinement
  static constexpr double refinedTarget = 1e-12;  // relative residual of a refined solution

 private:
  void orderInDouble();
  void factorInDouble();
  bool factorInSingle();
  void giveUpSingle(const MumpsFault& fault);
  void giveUpSingle(const std::string& why);
  template <class Real>
  void limitMemory(MumpsFactor<Real>& library);
  double diagonal(int row) const { return system_.matrixValue[system_.rowStart[row]]; }
  Column<double> unbalancedLoad() const;
  void requireRegular(const Column<double>& load, const Column<double>& answer) const;
  void solveInDouble(const Column<double>& load, Column<double>& unknowns);
  bool refine(std::span<ConjugateGradients> solutions);
  bool solveRefined(Column<double>& unknowns);

  CompressedSystem& system_;
  const int n_;
  Column<int> rowBlock_;  // [1..n], until a factor in double precision is there
  const int memoryLimit_;
  const std::string folder_;
  bool outOfCore_ = false;
  bool checked_ = false;  // that the matrix is regular, by a factor in single precision
  int steps_ = 1;
  std::unique_ptr<MumpsFactor<double>> inDouble_;
  std::unique_ptr<SingleFactor> inSingle_;
};

}  // namespace keld
