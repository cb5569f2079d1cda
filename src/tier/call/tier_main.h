// The flow of one call: checks, set-up or re-start, solution, clean-up. Called by the entries; its steps are
// called by the control layer.
#pragma once

#include <functional>

#include "tier/codes/call_arguments.h"
#include "tier/store/controls.h"

namespace tier {

/// A call under way.
struct call_state {
  call_arguments& call;
  controls c;
  run_results results;
  double original_res_in = -1.0,
         original_res_out = -1.0;  // of the caller's system where a modified one is solved
};

/// ierr of a piece of work: what it returns, or the number of the failure that it throws. Nothing thrown may
/// cross the C interface.
int ierr_of(const std::function<int()>& work);

/// Runs a call from the log file to the clean-up; returns ierr.
int tier_main(call_arguments& call, run_results& results);

/// Steps of a call, for the control layer.
void full_set_up(call_state& s);
void re_start(call_state& s);
void solve(call_state& s);

/// Norm of the residual of the caller's u.
double first_guess_residual(const call_state& s);

}  // namespace tier
