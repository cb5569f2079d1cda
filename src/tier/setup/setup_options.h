// The options of a set-up: each part stands with the algorithm that it steers.
// Made from the codes and parameters of a call by options_of_setup; read through setup_state.
#pragma once

#include "tier/setup/coarsening_stop.h"
#include "tier/setup/driver_int.h"
#include "tier/setup/driver_split.h"
#include "tier/setup/galerkin_step.h"
#include "tier/setup/interpolation_row.h"
#include "tier/setup/primary.h"
#include "tier/setup/rwsrt.h"

namespace tier {

struct setup_options {
  strength_options strength;  // but for nprim and report, which are the level's
  primary_options primary;
  splitting_options splitting;
  interpolation_options interpolation;  // but for nprim
  bool blocks_may_eliminate = true;     // see block_options
  improvement_options improvement;
  galerkin_options galerkin;
  coarsening_limits limits;
  bool prints_matrices = true;  // statistics of each new level, where set-up reports (mode_debug)
  int row_sum_code = 0;         // nint_rowsum1, for the report
};

}  // namespace tier
