// Passive for iswit 1 to 5 but for two tests; an automatic re-start control for 6 to 8.
#include "tier/call/tier_control.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tier/call/first_guess.h"
#include "tier/call/solver_state.h"
#include "tier/solve/stopping.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr double smallest_normal = std::numeric_limits<double>::min();

void control(std::string_view text) { info(message_class::control, text); }

bool sets_up(run_kind run) { return run == run_kind::set_up_and_keep || run == run_kind::set_up_once; }

void set_up_or_re_start(call_state& s) {
  if (sets_up(s.c.iswit))
    full_set_up(s);
  else
    re_start(s);
}

/// True where the first guess is as good as asked for and nobody insists on work. A residual that is too
/// small for a relative test is left to the solution phase, which ends the call.
bool first_guess_satisfies(call_state& s) {
  if (first_guess_kind(s.c.ifirst) != 0) return false;
  const double residual = first_guess_residual(s);
  if (residual <= smallest_normal) return false;
  const double target =
      stop_target(s.c.eps, parm().eps_abs, parm().ntake_res_in != 0 ? s.call.res_in : residual);
  if (!(residual <= target)) return false;

  control("First guess satisfies eps-criterion:");
  control(formatted("Residual of first guess  = %.6e", residual));
  control(formatted("Residual to be undershot = %.6e", target));
  if (s.c.iswit == run_kind::set_up_and_keep || s.c.iswit == run_kind::new_operators) {
    control("TIER setup will be performed anyway: user-enforced (iswit=" +
            std::to_string(code_of(s.c.iswit)) + ").");
    return false;
  }
  if (parm().ncyc_min > 0) {
    control("TIER solver will be performed anyway: user-enforced (ncyc_min>0).");
    return false;
  }
  control("TIER solver skipped.");
  s.results.res_in = s.results.res_out = residual;
  return true;
}

void run_once(call_state& s) {
  trace(trace_topic::call, "Automatic control mechanism not active:");
  trace(trace_topic::call, "User did not activate it (iswit<=5).");
  if (first_guess_satisfies(s)) return;
  set_up_or_re_start(s);
  solve(s);
}

/// Runs a call in parts: what earlier parts have done counts for the limit of cycles and the target.
class automatic_run {
 public:
  explicit automatic_run(call_state& s)
      : s_(s), limit_(s.c.ncycle), first_guess_(s.call.u, s.call.u + s.c.nnu) {}

  void run() {
    if (must_set_up()) {
      new_set_up();
      solve_rest();
      return;
    }
    solver().calls_with_hierarchy += 1;
    re_start_as(run_kind::reuse_all, "TIER setup completely reused (iswit=8).");
    if (test_convergence())
      solve_rest();
    else {
      new_set_up();
      solve_rest();
    }
  }

 private:
  bool must_set_up() const {
    if (!solver().hierarchy_present || parm().refresh_called) return true;
    if (descriptors_of(s_.call, s_.c) != solver().last_set_up) return true;
    if (solver().calls_with_hierarchy < parm().max_calls) return false;
    control("Maximum number of calls reached. Enforcing new setup.");
    return true;
  }

  void new_set_up() {
    control("+++++++++++++++ Performing TIER setup ...... ++++++++++++++++");
    s_.c.iswit = run_kind::set_up_and_keep;
    full_set_up(s_);
    solver().calls_with_hierarchy = 1;
  }

  void re_start_as(run_kind run, const char* words) {
    control(words);
    s_.c.iswit = run;
    re_start(s_);
  }

  void solve_part(int cycles) {
    const run_results before = s_.results;
    s_.c.ncycle = cycles;
    solve(s_);
    s_.results.ncyc_done += before.ncyc_done;
    if (before.res_in >= 0.0) s_.results.res_in = before.res_in;
    if (before.res_in < 0.0) target_ = stop_target(s_.c.eps, parm().eps_abs, s_.results.res_in);
    s_.c.eps = -target_;  // from now on the first residual of the call decides
    s_.c.ifirst = 0;      // and u is the approximation so far
  }

  bool done() const { return s_.results.res_out <= target_ || s_.results.ncyc_done >= limit_; }

  void solve_rest() {
    if (s_.results.ncyc_done > 0 && done()) return;
    solve_part(limit_ - s_.results.ncyc_done);
  }

  /// A few cycles with the kept hierarchy. False where it must be made anew: too slow, or diverging.
  bool test_convergence() {
    const int cycles = std::clamp(parm().cntrl_retry_iter, 1, limit_);
    control("Testing convergence with <= " + std::to_string(cycles) + " cycles");
    const int warning = last_warning();  // those of a test that isn't the end don't count
    try {
      solve_part(cycles);
    } catch (const failure&) {
      note_warning(warning);
      control("... with very first guess.");
      std::copy(first_guess_.begin(), first_guess_.end(), s_.call.u);
      s_.results = run_results();
      return false;
    }
    if (done()) return true;
    note_warning(warning);
    const double growth = s_.results.res_out / s_.results.res_in;
    const double rho = std::pow(growth, 1.0 / std::max(1, s_.results.ncyc_done));
    if (growth > parm().divergence) {
      control("... with zero function (strong divergence).");
      std::fill_n(s_.call.u, s_.c.nnu, 0.0);
    } else if (growth > 1.0) {
      control("... with current approximation (weak divergence).");
    } else if (rho > parm().rho_min) {
      control("Convergence too slow, restart immediately!");
    } else {
      control(rho <= parm().rho_ok ? "Convergence particularly fast. Continue without check."
                                   : "Convergence satisfactory. Continue.");
      return true;
    }
    return false;
  }

  call_state& s_;
  int limit_;
  double target_ = 0.0;
  std::vector<double> first_guess_;
};

void run_automatically(call_state& s) {
  switch (s.c.iswit) {
    case run_kind::automatic:
      return automatic_run(s).run();
    case run_kind::automatic_operators:
      control("TIER setup partially reused (iswit=7).");
      s.c.iswit = run_kind::new_operators;
      break;
    case run_kind::automatic_reuse:
      control("TIER setup completely reused (iswit=8).");
      s.c.iswit = run_kind::reuse_all;
      break;
    default:
      fail(ierr_illegal_value, "Illegal value of parameter <iswtch> in (tier_main)!");
  }
  re_start(s);
  solve(s);
}

}  // namespace

void tier_cntrl(call_state& s) {
  if (s.c.ncycle == 0) {
    control("Nothing to do since ncycle=0 on input.");
    if (s.c.iswit == run_kind::set_up_and_keep || s.c.iswit == run_kind::new_operators) set_up_or_re_start(s);
    return;
  }
  if (s.c.iswit < run_kind::automatic)
    run_once(s);
  else
    run_automatically(s);
}

}  // namespace tier
