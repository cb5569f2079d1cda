// The multigrid path: the reduced system goes to the library TIER.
// Called by the analysis driver for any solverChoice other than 2.
#pragma once

#include <span>

#include "model/model_tables.h"

namespace keld {

/// Solves for the system's rowLoad into unknowns [1..n], which holds the first guess, and returns TIER's
/// `ierr`: 0 good, positive an error, negative a warning.
int solveTier(CompressedSystem& system, std::span<double> unknowns);

}  // namespace keld
