// The door of a set-up: its digit codes, thresholds and parameters become the options of the algorithms.
// Called by the steps of a call before a set-up and before re-starts with new values.
#pragma once

#include "tier/setup/setup_options.h"
#include "tier/store/controls.h"

namespace tier {

struct threshold_pair {
  double first, second;
};

/// Two numbers in one: 21.25 is 0.01 and 0.25 (exponent 2, mantissa 1), 0.2 is 0 and 0.2.
threshold_pair decode_thresholds(double value);

/// Decodes and checks ecg, ewt, etr, ncg, nwt and what else steers a set-up; a value out of range ends the
/// call with ierr 20 and its name. Warning -50 for a digit without effect.
setup_options options_of_setup(const controls& c);

/// Those of the coarse operators alone.
galerkin_options options_of_operators(const controls& c);

}  // namespace tier
