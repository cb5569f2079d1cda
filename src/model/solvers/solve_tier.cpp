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

void setParameters(int aggregation) {
  const int externalThreads = 1, errorsOnly = -2, countedRows = 2;
  TIER_SET_OMP_NUM_THREADS_EXTERNAL(&externalThreads);
  TIER_SET_MODE_MESS(&errorsOnly);
  TIER_SET_NTYP_GALERKIN(&countedRows);
  TIER_SET_NAGGREGATION(&aggregation);
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

int rowsOf(const CompressedSystem& system) { return system.rowStart.rows() - 1; }

double relativeResidual(const CompressedSystem& s, const Column<double>& u) {
  const int n = rowsOf(s);
  double residual = 0.0, load = 0.0;
  for (int i = 1; i <= n; ++i) {
    double r = s.rowLoad[i];
    for (int k = s.rowStart[i]; k < s.rowStart[i + 1]; ++k) r -= s.matrixValue[k] * u[s.columnIndex[k]];
    residual += r * r;
    load += s.rowLoad[i] * s.rowLoad[i];
  }
  return residual == 0.0 ? 0.0 : std::sqrt(residual / load);  // infinite for a zero load
}

/// What differs between the two set-ups.
struct CallCodes {
  int matrix, approach, cycles;
  double tolerance;
  const Column<int>& rowPoint;  // [1..n]
};

TierOutcome call(CompressedSystem& system, Column<double>& unknowns, TierPass pass, const CallCodes& codes) {
  const int rows = rowsOf(system), entries = system.rowStart[rows + 1] - 1;
  const int functions = 3, guessAsItStands = 0, off = -1;
  const int code = runCode(pass), iscale[3] = {0, 0, 0};
  const double noChecks = -1.0;
  double operatorSize = 2.2, gridSize = 1.7, pointSize = 0.0, stencil = 2.4;  // estimates of the work space
  double firstResidual = 0.0, lastResidual = 0.0;
  TierOutcome outcome;
  TIER(&rows, &entries, &functions, system.rowStart.begin(), system.columnIndex.begin(),
       system.matrixValue.begin(), system.rowLoad.begin(), unknowns.begin(), system.rowFunction.begin(),
       &rows, codes.rowPoint.begin(), &rows, &codes.matrix, iscale, &firstResidual, &lastResidual,
       &outcome.steps, &outcome.ierr, &codes.approach, &guessAsItStands, &codes.tolerance, &codes.cycles,
       &code, &operatorSize, &gridSize, &pointSize, &stencil, &noChecks, &off, &off);
  outcome.relativeResidual = relativeResidual(system, unknowns);
  return outcome;
}

}  // namespace

TierOutcome solveTier(CompressedSystem& system, Column<double>& unknowns, int cycleLimit, TierPass pass) {
  requireCycleLimit(cycleLimit);
  setParameters(0);
  constexpr int nonSymmetric = 21, unknownBased = 20, vCyclesUnderGmres = 1300000;
  return call(
      system, unknowns, pass,
      {nonSymmetric, unknownBased, vCyclesUnderGmres + cycleLimit, TierOutcome().target, system.rowPoint});
}

TierOutcome solveAggregation(CompressedSystem& system, Column<double>& unknowns, int cycleLimit,
                             TierPass pass, const WallBlocks& walls) {
  requireCycleLimit(cycleLimit);
  setParameters(1);
  TIER_SET_NAGG_STRENGTH(&walls.tuning.strength);
  TIER_SET_AGG_THETA(&walls.tuning.limit);
  TIER_SET_NAGG_DEGREE(&walls.tuning.smoothingDegree);
  int ierr = 0;
  if (pass != TierPass::further) {
    const int rows = rowsOf(system), count = static_cast<int>(walls.modes.size()) / rows;
    TIER_MODES_SET(&rows, &count, walls.modes.data(), &ierr);
  }
  TierOutcome outcome;
  constexpr int symmetric = 12, byPoints = 30, cyclesUnderCg = 1100000;
  constexpr double tolerance = 1e-10;
  if (ierr == 0)
    outcome = call(system, unknowns, pass,
                   {symmetric, byPoints, cyclesUnderCg + cycleLimit, tolerance, walls.rowBlock});
  else
    outcome = {ierr, 0, relativeResidual(system, unknowns)};
  TIER_MODES_CLEAR();
  outcome.target = tolerance;
  return outcome;
}

void releaseTier() {
  int ierr = 0;
  TIER_CLEANUP(&ierr);
}

}  // namespace keld
