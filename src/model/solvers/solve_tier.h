// The multigrid path: the reduced system goes to the library TIER.
// Called by the analysis driver for any solverChoice other than 2.
#pragma once

#include <vector>

#include "model/model_tables.h"
#include "model/solvers/aggregation_tuning.h"
#include "run/base/column.h"

namespace keld {

/// What a call of TIER is for: one pass alone, the first of several, which keeps its hierarchy, or a further
/// one with the same matrix, which uses it.
enum class TierPass { only, first, further };

struct TierOutcome {
  int ierr = 0;                   // 0 good, positive an error, negative a warning
  int steps = 0;                  // steps of the accelerator
  double relativeResidual = 0.0;  // ||f - A u|| / ||f|| of the result, 0 where both are 0

  /// Whether the unknowns are a solution: the true residual decides, whatever ierr says. Without a word of
  /// the library it may lie above the target by what the rounding of another order of summation makes of it.
  bool isSolution() const { return relativeResidual <= (ierr == 0 ? 2.0 : 1.0) * target; }
  double target = 1e-8;  // of the relative residual
};

/// Solves for the system's rowLoad into unknowns [1..n], which holds the first guess, by at most cycleLimit
/// steps. The entries of a row may stand in another order afterwards.
/// A cycleLimit outside 1 to 9999 ends the run.
TierOutcome solveTier(CompressedSystem& system, Column<double>& unknowns, int cycleLimit, TierPass pass);

/// What aggregation needs to know of the walls besides the system.
struct WallBlocks {
  Column<int> rowBlock;  // [1..n] number of the row's block: the two triples of a mesh node
  std::vector<double>
      modes;  // rigid motions by row, six one after the other; a further pass doesn't read them
  AggregationTuning tuning;
};

/// The same by smoothed aggregation, to 1e-10.
TierOutcome solveAggregation(CompressedSystem& system, Column<double>& unknowns, int cycleLimit,
                             TierPass pass, const WallBlocks& walls);

/// Frees the hierarchy that a first pass has kept.
void releaseTier();

}  // namespace keld
