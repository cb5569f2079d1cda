// Driver of the solution phase.
#include "tier/solve/tier_solve.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tier/solve/accelerators.h"
#include "tier/solve/cyc.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/level_factors.h"
#include "tier/solve/norms.h"
#include "tier/solve/one_level.h"
#include "tier/solve/smoother.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/report.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr double smallest_normal = 2.2250738585072014e-308;

/// Compares the caller's res_in with the computed one, which holds.
void tier_check_res_in(double user, double computed) {
  if (computed < 0.0 || user < 0.0)
    fail(ierr_solution_internal, "One or both of the residuals too tiny (tier_check_res_in)!");
  if (user <= smallest_normal)
    fail(ierr_inconsistent_input, "User-defined first residual too tiny (tier_solve)!");
  if (100.0 * std::abs(user - computed) > std::min(user, computed)) {
    info(message_class::warning, "user-provided res_in is different from freshly computed one!");
    info(message_class::warning, formatted("user res_in=%.15e", user));
    info(message_class::warning, formatted("new  res_in=%.15e", computed));
  } else {
    info(message_class::note, "user-provided res_in is identical to freshly computed one!");
  }
}

/// Cycles on each coarse level alone, for its own residual 1 in every row; leaves u of level 1 untouched.
void show_coarse_convergence(cycle_state& s) {
  if (s.levels() < 3) {
    info(message_class::note, "Coarse-level convergence needs at least 3 levels: skipped");
    return;
  }
  for (int k = s.levels() - 1; k >= 2; --k) {
    level& l = s.at(k);
    fill(l.n, 1.0, l.f);
    fill(l.n, 0.0, l.u);
    double before = resid(l, l.f, l.u, s.c.norm_typ);
    for (int cycle = 1; cycle <= std::min(s.c.ncycle, 50) && before >= 1e-90; ++cycle) {
      cyc(s, k, "show_coarse_level_convergence");
      const double after = resid(l, l.f, l.u, s.c.norm_typ);
      message(formatted("level %d cycle %d residual %.15e reduction %.15e", k, cycle, after,
                        after / (before + 1e-90)));
      before = after;
    }
  }
}

class solution {
 public:
  solution(hierarchy& h, const controls& c, const solve_options& o, run_results& r,
           const own_accelerator& own)
      : s_(h, c, o), c_(c), o_(o), results_(r), own_(own) {
    if (c.show_un_res > 0) by_function_.allocate(std::max(1, c.nsys), "resids", "resids_alloc");
  }

  void run() {
    if (!own_) prepare_cycles();
    first_residual();
    const double target = stop_target(c_.eps, o_.stopping.floor, results_.res_in);
    if (o_.stopping.least_steps <= 0 && results_.res_in <= target) return;
    if (!own_ && stand_alone_cycles(target)) return;
    accelerate(target);
  }

 private:
  void prepare_cycles() {
    if (is_one_level(o_.cycle.kind))
      prepare_one_level(s_);
    else
      prepare_smoothers(s_);
    if (c_.coarse_trace) show_coarse_convergence(s_);
  }

  level& fine() { return s_.at(1); }

  double residual_norm() {
    if (by_function_.size() == 0) return resid(fine(), fine().f, fine().u, c_.norm_typ);
    return unknowns_resids(fine(), fine().f, fine().u, c_.nsys, c_.norm_typ, by_function_);
  }

  void first_residual() {
    const double user = results_.res_in, computed = residual_norm();
    if (computed <= smallest_normal)
      fail(ierr_solution_internal, "Freshly computed first-guess residual too tiny (tier_solve)!");
    if (o_.res_in_is_given) {
      if (user != user) fail(ierr_inconsistent_input, "Residual is NaN(tier_solve)!");
      tier_check_res_in(user, computed);
    }
    results_.res_in = results_.res_out = computed;
    results_.res0 = -1.0;
    print_residual_head(c_);
    print_residual_line(c_, 0, computed, -1.0, by_function_);
    current_residual(0, computed);
    if (o_.average_from == 0) results_.res0 = computed;
  }

  /// The cycles before the accelerator, or all of them without one. True: the run has ended.
  bool stand_alone_cycles(double target) {
    const int count = o_.acceleration.method == accelerator::none
                          ? c_.ncycle
                          : std::min(o_.acceleration.cycles_before, c_.ncycle);
    if (count > 0) trace_sweeps(count);
    double previous = results_.res_in;
    for (int cycle = 1; cycle <= count; ++cycle) {
      if (is_one_level(o_.cycle.kind)) {
        one_level_sweeps(s_, count);
        results_.ncyc_done += count;
      } else {
        cyc(s_, 1, "plain_amg_cycling");
        ++results_.ncyc_done;
      }
      const double res = results_.res_out = residual_norm();
      print_residual_line(c_, results_.ncyc_done, res, previous, by_function_);
      current_residual(results_.ncyc_done, res);
      if (results_.ncyc_done == o_.average_from) results_.res0 = res;
      if (results_.ncyc_done >= o_.stopping.least_steps && res <= target) return true;
      if (is_one_level(o_.cycle.kind)) break;
      previous = res;
    }
    if (o_.acceleration.method != accelerator::none) return false;
    if (count > 0 && results_.res_out > target)
      warn(warn_cycles_not_converged, "Cycling stop: not converged (tier_solve)!");
    return true;
  }

  void trace_sweeps(int count) {
    if (c_.out_level < 0) return;
    const auto codes = [](const sweep_code& code) {
      std::string text;
      for (int m = 0; m < code.steps; ++m) text += " " + std::to_string(code.step[m]);
      return text;
    };
    trace(trace_topic::solution, "CYC niter " + std::to_string(count));
    trace(trace_topic::solution, "(stand-alone AMG cycling or pre-iterations)");
    trace(trace_topic::solution,
          "CYC nrdx  " + std::to_string(o_.smoothing.pre.passes) + " nrdtyp " + codes(o_.smoothing.pre));
    trace(trace_topic::solution,
          "CYC nrux  " + std::to_string(o_.smoothing.post.passes) + " nrutyp " + codes(o_.smoothing.post));
  }

  void accelerate(double target) {
    if (!own_)
      trace(trace_topic::solution,
            "PREC (AMG as pre-conditioner), ncgrad " + std::to_string(code_of(o_.acceleration.method)));
    stopping_rules rules(o_.stopping, fine().n, target);
    accelerated_run run{s_, results_, rules, by_function_};
    if (own_) return own_(run);
    const auto traced = [&run](void (*method)(accelerated_run&), const char* name) {
      try {
        method(run);
      } catch (const failure&) {
        trace(trace_topic::solution, std::string("... in (") + name + ")");
        throw;
      }
    };
    switch (o_.acceleration.method) {
      case accelerator::cg:
        if (o_.acceleration.ratio == cg_ratio::fletcher_reeves) return traced(old_cgc, "old_cgc");
        return traced(new_cgc, "new_cgc");
      case accelerator::bicgstab:
        return traced(cgstab, "cgstab");
      case accelerator::gmres:
        return traced(gmres, "gmres");
      case accelerator::flexible_cg:
        return traced(flexcg_skcycle, "flexcg_skcycle");
      case accelerator::none:
        break;
    }
    emergency_stop("Illegal value of parameter <ncgrad> in (solve)");
  }

  cycle_state s_;
  const controls& c_;
  const solve_options& o_;
  run_results& results_;
  const own_accelerator& own_;
  work_array<double> by_function_;
};

}  // namespace

cycle_state::cycle_state(hierarchy& levels_of_run, const controls& controls_of_run,
                         const solve_options& options_of_run)
    : h(levels_of_run), c(controls_of_run), o(options_of_run) {
  const int n = h(1).n;
  r.allocate(n, "r", "tier_solve");
  scratch.allocate(static_cast<std::int64_t>(matrix_team(n)) * n, "scratch", "tier_solve");
  if (o.cycle.star == star_cycle::none || h.levels_used < 2) return;
  for (work_array<double>* x : {&copy1, &copy2, &e1, &e2, &ae}) x->allocate(n, "e", "cyc");
}

void tier_solve(hierarchy& h, const controls& c, const solve_options& o, run_results& r,
                const own_accelerator& own) {
  try {
    solution(h, c, o, r, own).run();
  } catch (const failure&) {
    trace(trace_topic::solution, "... in (tier_solve)");
    throw;
  }
}

void release_solution_data() {
  coarse_factors() = {};
  release_level_factors();
}

}  // namespace tier
