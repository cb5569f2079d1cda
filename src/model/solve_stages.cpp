// The analysis driver: pattern, then one or two passes of assembly and solution, down to the displacement
// vectors. Called by the entry point between the model stage and the results.
#include "model/solve_stages.h"

#include <chrono>
#include <cmath>
#include <memory>

#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/rigid_modes.h"
#include "model/solvers/aggregation_tuning.h"
#include "model/solvers/solve_direct.h"
#include "model/solvers/solve_tier.h"
#include "model/solvers/solver_road.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "model/walls/wall_model.h"
#include "run/base/failure.h"
#include "run/base/platform.h"
#include "run/base/streams.h"
#include "run/base/vector3.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

double seconds() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

void reportPass(int stressPass, int passCount) {
  vPrintMessage(100, stressPass < passCount ? "\n   Solving In-mold Residual Stress effect ......\n"
                                            : "\n   Solving Demolding Residual Stress effect ......\n\n");
}

/// What solves the passes, kept from one to the next: a factor or a hierarchy serves every pass, as their
/// matrix is the same.
struct Solvers {
  Road road = Road::direct;
  bool mayTurn = false;  // to the direct solver, where aggregation fails
  std::unique_ptr<DirectSolver> direct;
  bool hierarchyKept = false;
};

/// First pass: matrix and load. A further one has the same matrix, so that its load alone is formed.
void assemble(int stressPass, int passCount) {
  if (stressPass > 1) return assembleLoad(stressPass, passCount);
  assemblePass(stressPass, passCount);
  releasePattern();
}

void solveDirect(std::unique_ptr<DirectSolver>& solver) {
  const double start = seconds();
  if (!solver) {
    solver =
        std::make_unique<DirectSolver>(systemOfPass, rowBlocks(freedoms, wedgeNumbering.nodeMate),
                                       inCoreLimit(availableMemory()), scratchFolder(workingFiles.baseName));
  }
  const double residual = solver->solve(solution.rowSolution);
  vPrintMessage(100, "   Solver= MUMPS%s  steps= %d  relative residual= %.2e  time= %.2f sec\n",
                solver->inSingle() ? " in single precision, refined" : "", solver->steps(), residual,
                seconds() - start);
}

void reportTier(const TierOutcome& outcome, const char* method, double time) {
  if (outcome.ierr > 0) vPrintMessage(1, "AMG terminated with error code **** %d\n", outcome.ierr);
  if (outcome.ierr < 0) vPrintMessage(1, "AMG terminated with warning code **** %d\n", outcome.ierr);
  const bool converged = outcome.ierr == 0 && outcome.isSolution();
  vPrintMessage(100, "   Solver= TIER%s  steps= %d  relative residual= %.2e  time= %.2f sec%s\n", method,
                outcome.steps, outcome.relativeResidual, time, converged ? "" : "  not converged");
  if (outcome.isSolution()) return;
  vPrintMessage(
      1,
      "\n !! Warning !!  The displacements of this pass are no solution: the relative residual of the "
      "multigrid solver is %.2e, its target %.0e, its code %d. Mend thin or empty triangles, or take "
      "the direct solver (value 2 of the .CPU file).\n",
      outcome.relativeResidual, outcome.target, outcome.ierr);
  vPrintMessage(100, "   The displacements of this pass are no solution: relative residual= %.2e\n",
                outcome.relativeResidual);
}

TierPass passKind(const Solvers& solvers, bool last) {
  return solvers.hierarchyKept ? TierPass::further : last ? TierPass::only : TierPass::first;
}

WallBlocks wallBlocks(bool withModes) {
  WallBlocks walls;
  walls.rowBlock = rowBlocks(freedoms, wedgeNumbering.nodeMate);
  if (withModes) walls.modes = rigidModes(wallModel());
  walls.tuning = aggregationTuning(processRecord.wallModel == facet_walls, triangleShapes());
  return walls;
}

/// After a failure the hierarchy is gone.
TierOutcome solveMultigrid(Solvers& solvers, bool last) {
  const TierPass pass = passKind(solvers, last);
  const bool aggregation = solvers.road == Road::aggregation;
  const double start = seconds();
  TierOutcome outcome;
  if (aggregation) {
    outcome = solveAggregation(systemOfPass, solution.rowSolution, processRecord.cycleLimit, pass,
                               wallBlocks(pass != TierPass::further));
  } else {
    outcome = solveTier(systemOfPass, solution.rowSolution, processRecord.cycleLimit, pass);
  }
  solvers.hierarchyKept = pass != TierPass::only && outcome.ierr <= 0;
  reportTier(outcome, aggregation ? " by aggregation" : "", seconds() - start);
  return outcome;
}

void releaseHierarchy(Solvers& solvers) {
  if (solvers.hierarchyKept) releaseTier();
  solvers.hierarchyKept = false;
}

void solvePass(Solvers& solvers, bool last) {
  if (solvers.road == Road::direct) return solveDirect(solvers.direct);
  const TierOutcome outcome = solveMultigrid(solvers, last);
  if (outcome.isSolution() || !solvers.mayTurn) return;
  vPrintMessage(1, "   The direct solver takes this part over.\n");
  releaseHierarchy(solvers);
  solvers.road = Road::direct;
  solveDirect(solvers.direct);
}

}  // namespace

void scatterToFreedoms(const FreedomTables& freedom, const Column<double>& rowSolution,
                       Column<double>& displacement) {
  displacement.assign(freedom.dofCount, 0.0);
  for (int row = 1; row <= freedom.freeDofCount; ++row) {
    if (!std::isfinite(rowSolution[row])) {
      vFail(
          "\n !! Error !!  The displacement of degree of freedom %d isn't finite: the system has no usable "
          "solution. Check thickness, moduli and boundary nodes.\n",
          freedom.freeDofList[row]);
    }
    displacement[freedom.freeDofList[row]] = rowSolution[row];
  }
}

void turnToGlobalAxes(const FreedomTables& freedom, const Column<RestraintFrame>& frames,
                      Column<double>& displacement) {
  for (int node = 1; node <= freedom.nodeRestraint.rows(); ++node) {
    if (freedom.nodeRestraint[node] != -2 && freedom.nodeRestraint[node] != -3) continue;
    const RestraintFrame& frame = frames[freedom.nodeFrame[node]];
    double* u = &displacement[freedom.nodeFirstDof[node]];
    const Vector3 global = u[0] * frame.ex + u[1] * frame.ey + u[2] * frame.ez;
    for (std::size_t c = 0; c < 3; ++c) u[c] = global[c];
  }
}

Column<int> rowBlocks(const FreedomTables& freedom, const Column<int>& nodeMate) {
  Column<int> block(freedom.freeDofCount, 0);
  for (int row = 1; row <= freedom.freeDofCount; ++row) {
    const int node = (freedom.freeDofList[row] - 1) / 3 + 1;  // every wedge node has three freedoms
    block[row] = std::min(node, nodeMate[node]);
  }
  return block;
}

void analysisDriver() {
  vPrintMessage(1, "\n   Searching processing ......\n");
  patternSearch();
  vPrintMessage(100, "\n   Allocate processing ......\n");
  vPrintMessage(100, "\n   Generating processing ......\n");

  const int passCount = residualStressValid == 1 ? 2 : 1;
  solution.displacementInMold.assign(freedoms.dofCount, 0.0);
  Solvers solvers;
  solvers.road = roadOf(processRecord, freedoms.freeDofCount, availableMemory());
  solvers.mayTurn = solvers.road == Road::aggregation && processRecord.solverRoad == automatic_road;
  for (int stressPass = 1; stressPass <= passCount; ++stressPass) {
    reportPass(stressPass, passCount);
    solution.rowSolution.assign(freedoms.freeDofCount, 0.0);
    assemble(stressPass, passCount);
    solvePass(solvers, stressPass == passCount);
    scatterToFreedoms(freedoms, solution.rowSolution, solution.displacementTotal);
    turnToGlobalAxes(freedoms, restraintFrames, solution.displacementTotal);
    if (stressPass < passCount) solution.displacementInMold = solution.displacementTotal;
  }
  solvers.direct.reset();  // before the tables that it works on
  releaseHierarchy(solvers);
  systemOfPass = {};
  solution.rowSolution = {};
}

}  // namespace keld
