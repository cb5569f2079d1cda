// What the accelerators share: preconditioning, real residuals, the end of a step.
#include "tier/solve/accelerators.h"

#include "tier/solve/cyc.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/norms.h"
#include "tier/solve/one_level.h"
#include "tier/store/report.h"

namespace tier {

level& accelerated_run::fine() { return s.at(1); }

void precondition(accelerated_run& run, view<double> v, view<double> z, std::string_view reason) {
  cycle_state& s = run.s;
  if (is_one_level(s.o.cycle.kind)) {
    one_level_precondition(s, v, z);
    return;
  }
  fill(run.fine().n, 0.0, z);
  const level_system correction(run.fine(), z, v);
  for (int i = 0; i < s.o.acceleration.inner_cycles; ++i) cyc(s, 1, reason);
}

double real_residual(accelerated_run& run, view<double> r) {
  level& l = run.fine();
  const controls& c = run.s.c;
  if (run.by_function) unknowns_resids(l, l.f, l.u, c.nsys, c.norm_typ, run.by_function);
  return compute_residual_norm(l, l.f, l.u, r, c.norm_typ);
}

void end_step(accelerated_run& run, double res, double& previous) {
  const int step = ++run.results.ncyc_done;
  if (step == run.s.o.average_from) run.results.res0 = res;
  print_residual_line(run.s.c, step, res, previous);
  current_residual(step, res);
  run.rules.store_residual(res);
  previous = res;
}

}  // namespace tier
