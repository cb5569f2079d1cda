// A call of TIER through its public header, timed. Used by the race and by the tables of convergence.
#pragma once

#include "scalar_systems.h"

namespace bench {

/// Digit codes of the call, smoothing before and behind the coarse level, variant of the Galerkin product.
/// The defaults suit scalar systems without large positive couplings:
/// V-cycles under GMRES(30), direct interpolation.
struct tier_settings {
  int matrix = 22, nsolve = 1, ncyc = 1300200, iswtch = 5110, nrd = 131, galerkin_variant = 0, nru = 131;
};

/// The codes of the analysis.
constexpr tier_settings analysis_settings{21, 20, 1303000, 5120, 131, 2};

struct tier_outcome {
  double processor_seconds = 0.0;
  double setup = 0.0, solution = 0.0;  // seconds, elapsed
  int steps = 0, levels = 0, ierr = 0;
  double operator_complexity = 0.0;
  double residual = 0.0;  // relative, recomputed
};

/// Solves from zero to 1e-8; complains on the standard error output when TIER does.
tier_outcome call_tier(const linear_system& system, const tier_settings& settings);

}  // namespace bench
