// Trilinos ML on a wall system, for the race of solvers. Built where libtrilinos-ml-dev is installed.
#pragma once

#include <string>
#include <vector>

#include "wall_systems.h"

namespace bench {

struct ml_outcome {
  double setup = 0.0, total = 0.0;  // s of processor time
  int steps = 0, levels = 0;
  double complexity = 0.0;
  std::vector<double> u;
};

/// Smoothed aggregation over the blocks of w with its modes as near-null space, conjugate gradients to eps.
/// smoother: "cheby" of degree 2, "gs" symmetric Gauss-Seidel, "block" the same over blocks.
ml_outcome call_ml(const wall_system& w, double eps, const std::string& smoother);

}  // namespace bench
