// Decoding and checking of the control codes of a call against the parameter store. Called by tier_main
// before anything is set up.
#pragma once

#include "tier/codes/call_arguments.h"
#include "tier/store/controls.h"

namespace tier {

/// The control values of a call. Codes out of range end the call with ierr 20, sizes with 50, what is not
/// released with 80; the first fault in the order of the checks counts. Settings that are adjusted draw
/// warnings. The arrays of the caller are not read here.
controls tier_input(const call_arguments& call);

/// Parameters away from their default that have no effect (warning -50 each) or are not released (80).
void check_unused_parameters();

}  // namespace tier
