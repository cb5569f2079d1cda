// The direct path: half of the matrix, precision, memory limit, factor, check of its regularity, solutions.
// Called by the analysis driver where solverChoice is 2.
#include "model/solvers/solve_direct.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "model/solvers/conjugate_gradients.h"
#include "model/solvers/upper_triangle.h"
#include "run/base/failure.h"
#include "run/base/streams.h"

namespace keld {

namespace {

std::string wordsOf(const MumpsFault& fault) {
  return std::string("has failed in its step '") + fault.step + "': " + fault.meaning() +
         " (INFOG(1)= " + std::to_string(fault.code) + ", INFOG(2)= " + std::to_string(fault.detail) + ")";
}

[[noreturn]] void endWith(const MumpsFault& fault) {
  vFail("\n !! Error !!  The direct solver %s.\n", wordsOf(fault).c_str());
}

/// A step of the library that must not fail.
template <class Step>
auto orEnd(const Step& step) {
  try {
    return step();
  } catch (const MumpsFault& fault) {
    endWith(fault);
  }
}

std::string scientific(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2e", value);
  return text;
}

}  // namespace

int inCoreLimit(std::uint64_t availableBytes) {
  return static_cast<int>(
      std::min(0.9 * static_cast<double>(availableBytes) / 1e6, static_cast<double>(INT_MAX)));
}

std::string scratchFolder(const std::string& baseName) {
  if (const char* chosen = std::getenv("MUMPS_OOC_TMPDIR"); chosen != nullptr && *chosen != '\0')
    return chosen;
  const std::string folder = std::filesystem::path(baseName).parent_path().string();
  return folder.empty() ? "." : folder;
}

DirectSolver::DirectSolver(CompressedSystem& system, const Column<int>& rowBlock, int memoryLimit,
                           const std::string& folder, FactorPrecision precision)
    : system_(system), n_(rowsOf(system)), rowBlock_(rowBlock), memoryLimit_(memoryLimit), folder_(folder) {
  keepUpperTriangle(system_);
  const bool bySize = precision == FactorPrecision::bySize;
  bool single = precision == FactorPrecision::inSingle || (bySize && n_ >= singleFrom);
  if (bySize && !single) {
    orderInDouble();
    single = inDouble_->megabytesInMemory() > memoryLimit_;
    if (single) inDouble_.reset();
  }
  if (!single || !factorInSingle()) factorInDouble();
}

void DirectSolver::orderInDouble() {
  if (!inDouble_)
    inDouble_ = orEnd([&] { return std::make_unique<MumpsFactor<double>>(system_, rowBlock_); });
}

void DirectSolver::factorInDouble() {
  orderInDouble();
  limitMemory(*inDouble_);
  const int negativePivots = orEnd([&] { return inDouble_->factor(system_.matrixValue); });
  if (negativePivots > 0) {
    vFail(
        "\n !! Error !!  The stiffness matrix isn't positive definite: %d negative pivots (direct solver). "
        "Check thickness and moduli, and that all triangles hang together.\n",
        negativePivots);
  }
  rowBlock_ = {};
  const Column<double> load = unbalancedLoad();
  Column<double> answer(load.rows());
  solveInDouble(load, answer);
  requireRegular(load, answer);
}

/// Whether there is one that may serve.
bool DirectSolver::factorInSingle() {
  try {
    inSingle_ = std::make_unique<SingleFactor>(system_, rowBlock_);
    limitMemory(inSingle_->library());
    const int negativePivots = inSingle_->factor(system_);
    if (negativePivots == 0) return true;
    giveUpSingle("has " + std::to_string(negativePivots) + " negative pivots");
  } catch (const MumpsFault& fault) {
    giveUpSingle(fault);
  }
  return false;
}

/// Where a factor can't go to disk a larger one can't either.
void DirectSolver::giveUpSingle(const MumpsFault& fault) {
  if (fault.ofDisk()) endWith(fault);
  giveUpSingle(wordsOf(fault));
}

void DirectSolver::giveUpSingle(const std::string& why) {
  inSingle_.reset();
  outOfCore_ = false;
  vPrintMessage(100, "   The factor in single precision %s: one in double precision takes its place\n",
                why.c_str());
}

template <class Real>
void DirectSolver::limitMemory(MumpsFactor<Real>& library) {
  const int need = library.megabytesInMemory(), needOnDisk = library.megabytesOnDisk();
  if (need <= memoryLimit_) return;
  if (needOnDisk > memoryLimit_) {
    vFail(
        "\n !! Error !!  The direct solver needs %d MB, with its factor on disk still %d MB, and %d MB are "
        "available: take the multigrid solver (value 2 of the .CPU file other than 2) or a coarser mesh.\n",
        need, needOnDisk, memoryLimit_);
  }
  if (folder_.size() > static_cast<std::size_t>(library.longestFolder())) {
    vFail(
        "\n !! Error !!  The path of the folder for the factor on disk is longer than %d bytes: '%s'. Name a "
        "shorter one in MUMPS_OOC_TMPDIR.\n",
        library.longestFolder(), folder_.c_str());
  }
  library.putOnDisk(folder_);
  outOfCore_ = true;
  vPrintMessage(100, "   The factor needs %d MB, above the limit of %d MB: it goes to disk in '%s'\n", need,
                memoryLimit_, folder_.c_str());
}

/// A part in two pieces, or with a piece on a hinge, has a singular matrix whose loads are balanced all the
/// same, so that the residual of any position of the loose piece is small. Hence a load that isn't balanced:
/// in the unknowns scaled to a unit diagonal its answer exceeds it by at most the condition of the matrix.
Column<double> DirectSolver::unbalancedLoad() const {
  Column<double> load(n_);
  for (int row = 1; row <= n_; ++row) {
    const double scaled = 1.0 + 0.25 * (row % 7);  // out of step with the three directions
    load[row] = scaled * std::sqrt(diagonal(row));
  }
  return load;
}

void DirectSolver::requireRegular(const Column<double>& load, const Column<double>& answer) const {
  double loadSquare = 0.0, answerSquare = 0.0;
  for (int row = 1; row <= n_; ++row) {
    const double d = diagonal(row);
    loadSquare += load[row] * load[row] / d;
    answerSquare += answer[row] * answer[row] * d;
  }
  const double growth = std::sqrt(answerSquare / loadSquare);
  if (growth < growthLimit) return;
  vFail(
      "\n !! Error !!  The stiffness matrix is singular: the part isn't held "
      "in place (a load grows by %.1e in the direct solver, the limit is %.0e). "
      "Do all triangles hang together, by more than a corner or a hinge?\n",
      growth, growthLimit);
}

void DirectSolver::solveInDouble(const Column<double>& load, Column<double>& unknowns) {
  std::copy_n(load.begin(), n_, unknowns.begin());
  orEnd([&] { inDouble_->solve(unknowns); });
}

/// Whether all of the solutions come to an end under the factor in single precision; else that is given up.
bool DirectSolver::refine(std::span<ConjugateGradients> solutions) {
  using State = ConjugateGradients::State;
  std::vector<SingleFactor::Pair> pairs;
  // A third of the steps must do a third of the way: the others cost as much as a factor in double precision.
  constexpr int trialSteps = mostSteps / 3;
  const auto open = [](const ConjugateGradients& s) {
    const bool lags = s.steps() == trialSteps && s.progress() < 1.0 / 3.0;
    return s.state() == State::running && s.steps() < mostSteps && !lags;
  };
  while (std::any_of(solutions.begin(), solutions.end(), open)) {
    pairs.clear();
    for (ConjugateGradients& s : solutions)
      if (open(s)) pairs.push_back({s.residual(), s.preconditioned()});
    try {
      inSingle_->solve(pairs);
    } catch (const MumpsFault& fault) {
      giveUpSingle(fault);
      return false;
    }
    for (ConjugateGradients& s : solutions)
      if (open(s)) s.advance();
  }
  for (const ConjugateGradients& s : solutions) {
    if (s.state() == State::solved) continue;
    giveUpSingle("leaves a relative residual of " + scientific(s.relativeResidual()) + " in step " +
                 std::to_string(s.steps()));
    return false;
  }
  return true;
}

/// The load of the check goes along with that of the first pass: a pass over the factor takes most of the
/// time of a step, and serves both.
bool DirectSolver::solveRefined(Column<double>& unknowns) {
  constexpr double lax = 1e-6;  // of the load; a loose piece has more of it than that
  std::vector<ConjugateGradients> solutions;
  solutions.reserve(2);
  solutions.emplace_back(system_, system_.rowLoad, refinedTarget, unknowns);
  Column<double> load, answer;
  if (!checked_) {
    load = unbalancedLoad();
    answer.resize(load.rows());
    solutions.emplace_back(system_, load, lax, answer);
  }
  if (!refine(solutions)) return false;
  if (!checked_) requireRegular(load, answer);
  checked_ = true;
  steps_ = solutions[0].steps();
  return true;
}

double DirectSolver::solve(Column<double>& unknowns) {
  if (inSingle_ && !solveRefined(unknowns)) factorInDouble();
  if (inDouble_) {
    steps_ = 1;
    solveInDouble(system_.rowLoad, unknowns);
  }
  Column<double> scratch(n_);
  const double residual = trueResidual(system_, system_.rowLoad, unknowns, scratch);
  if (!(residual <= residualLimit)) {
    vFail("\n !! Error !!  The direct solution is wrong: its relative residual is %.3e, the limit is %.0e.\n",
          residual, residualLimit);
  }
  return residual;
}

int DirectSolver::megabytesUsed() const {
  return inSingle_ ? inSingle_->library().megabytesUsed() : inDouble_->megabytesUsed();
}

}  // namespace keld
