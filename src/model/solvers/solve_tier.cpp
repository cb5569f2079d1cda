// The multigrid path. Called by the analysis driver for any solverChoice other than 2.
#include "model/solvers/solve_tier.h"

#include <cmath>

#include "run/base/failure.h"
#include "tier.h"

namespace keld {

namespace {

/// The limit stands behind three digits of a code: a longer one would change those.
void requireCycleLimit(int cycleLimit) {
  constexpr int longest = 9999;
  if (cycleLimit >= 1 && cycleLimit <= longest) return;
  vFail(
      "\n !! Error !!  The cycle limit %d can't be given to the multigrid solver: value 10 of section "
      "[Keld_ComputeData] in the .CPU file is to be from 1 to %d.\n",
      cycleLimit, longest);
}

void setParameters() {
  const int externalThreads = 1, errorsOnly = -2, countedRows = 2;
  TIER_SET_OMP_NUM_THREADS_EXTERNAL(&externalThreads);
  TIER_SET_MODE_MESS(&errorsOnly);
  TIER_SET_NTYP_GALERKIN(&countedRows);
}

int runCode(TierPass pass) {
  switch (pass) {
    case TierPass::first:
      return 4120;
    case TierPass::further:
      return 1120;
    default:
      return 5120;
  }
}

double relativeResidual(const CompressedSystem& s, std::span<const double> u) {
  const int n = static_cast<int>(s.rowStart.size()) - 2;
  double residual = 0.0, load = 0.0;
  for (int i = 1; i <= n; ++i) {
    double r = s.rowLoad[i];
    for (int k = s.rowStart[i]; k < s.rowStart[i + 1]; ++k) r -= s.matrixValue[k] * u[s.columnIndex[k]];
    residual += r * r;
    load += s.rowLoad[i] * s.rowLoad[i];
  }
  return residual == 0.0 ? 0.0 : std::sqrt(residual / load);  // infinite for a zero load
}

}  // namespace

TierOutcome solveTier(CompressedSystem& system, std::span<double> unknowns, int cycleLimit, TierPass pass) {
  requireCycleLimit(cycleLimit);
  setParameters();

  const int rows = static_cast<int>(system.rowStart.size()) - 2, entries = system.rowStart[rows + 1] - 1;
  const int functions = 3, nonSymmetric = 21, unknownBased = 20, guessAsItStands = 0, off = -1;
  const int cycles = 1300000 + cycleLimit;  // V-cycles under flexible GMRES
  const int code = runCode(pass), iscale[3] = {0, 0, 0};
  const double tolerance = TierOutcome::target, noChecks = -1.0;
  double operatorSize = 2.2, gridSize = 1.7, pointSize = 0.0, stencil = 2.4;  // estimates of the work space
  double firstResidual = 0.0, lastResidual = 0.0;
  TierOutcome outcome;
  TIER(&rows, &entries, &functions, &system.rowStart[1], &system.columnIndex[1], &system.matrixValue[1],
       &system.rowLoad[1], &unknowns[1], &system.rowFunction[1], &rows, &system.rowPoint[1], &rows,
       &nonSymmetric, iscale, &firstResidual, &lastResidual, &outcome.steps, &outcome.ierr, &unknownBased,
       &guessAsItStands, &tolerance, &cycles, &code, &operatorSize, &gridSize, &pointSize, &stencil,
       &noChecks, &off, &off);
  outcome.relativeResidual = relativeResidual(system, unknowns);
  return outcome;
}

void releaseTier() {
  int ierr = 0;
  TIER_CLEANUP(&ierr);
}

}  // namespace keld
