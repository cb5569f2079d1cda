// What the accelerators with short recurrences share: the judgement after each step, by the updated and now
// and then by the real residual. Called by the CG kinds and BiCGstab.
#pragma once

#include "tier/solve/accelerators.h"

namespace tier {

/// An accelerator's name in messages and its warning numbers.
struct accelerator_words {
  const char *method, *routine;  // "BiCGstab", "cgstab"
  int quasi_warning, missed_warning;
  int steps_between_checks = 10;  // of the real residual
};

enum class verdict { go_on, done, refresh };

/// Whether earlier cycles have used up the limit; warns that the run has not converged.
bool no_steps_left(const accelerated_run& run, const accelerator_words& words);

/// Counts the step with norm `quasi` of the updated residual r. Where a rule or the limit would end the run,
/// and every steps_between_checks steps, the real residual is formed in `fresh` and decides.
/// Returns `done` when the run ends, its warning given; `refresh` when the updated residual was too good and
/// the caller must go on from `fresh`; else `go_on`.
verdict judge_step(accelerated_run& run, const accelerator_words& words, double quasi, double& previous,
                   view<double> fresh);

}  // namespace tier
