// The options of a solution: each part stands with the algorithm that it steers.
// Made from the codes and parameters of a call by solve_data; read through cycle_state.
#pragma once

#include "tier/solve/accelerators.h"
#include "tier/solve/coarse_solvers.h"
#include "tier/solve/cyc.h"
#include "tier/solve/smoother.h"
#include "tier/solve/stopping.h"

namespace tier {

struct solve_options {
  cycle_options cycle;
  smoothing_options smoothing;
  coarsest_options coarsest;
  acceleration_options acceleration;
  stopping_options stopping;
  int average_from = 2;          // step from which the mean reduction is measured (ncyc_start)
  bool res_in_is_given = false;  // by the caller, to be compared with the first residual (ntake_res_in)
};

}  // namespace tier
