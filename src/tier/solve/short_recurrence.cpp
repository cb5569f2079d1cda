// Judgement of steps for CG and BiCGstab.
#include "tier/solve/short_recurrence.h"

#include <string>

#include "tier/solve/cycle_state.h"
#include "tier/store/info.h"

namespace tier {

namespace {

void stop_words(const accelerator_words& words, int ierr, const char* reason) {
  warn(ierr, std::string(words.method) + " stop: " + reason + " (" + words.routine + ")!");
}

}  // namespace

bool no_steps_left(const accelerated_run& run, const accelerator_words& words) {
  if (run.results.ncyc_done < run.s.c.ncycle) return false;
  stop_words(words, words.missed_warning, "not converged");
  return true;
}

verdict judge_step(accelerated_run& run, const accelerator_words& words, double quasi, double& previous,
                   view<double> fresh) {
  end_step(run, quasi, previous);
  run.rules.check_approximations(run.fine().u);
  const int steps = run.results.ncyc_done;
  const decision by_quasi = run.rules.decide(steps, quasi);
  const bool at_limit = steps >= run.s.c.ncycle;
  if (by_quasi == decision::go_on && !at_limit && quasi > 0.0 && steps % words.steps_between_checks != 0)
    return verdict::go_on;

  const double real = run.results.res_out = real_residual(run, fresh);
  const decision by_real = run.rules.decide(steps, real);
  if (run.rules.reached(real) && (by_real != decision::go_on || at_limit || real == 0.0))
    return verdict::done;
  if (!run.rules.reached(real) && run.rules.quasi_differs(quasi, real)) {
    stop_words(words, words.quasi_warning, "quasi and real residual too different");
    return verdict::done;
  }
  if (by_real == decision::stagnation) {
    stop_words(words, words.missed_warning, "stagnation");
    return verdict::done;
  }
  if (at_limit) {
    stop_words(words, words.missed_warning, "not converged");
    return verdict::done;
  }
  return by_quasi == decision::converged || quasi == 0.0 ? verdict::refresh : verdict::go_on;
}

}  // namespace tier
