// The order of one call.
#include "tier/call/tier_main.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <new>
#include <string>

#include "tier/aggregation/aggregation_setup.h"
#include "tier/aggregation/flexible_cg.h"
#include "tier/call/first_guess.h"
#include "tier/call/solver_state.h"
#include "tier/call/tier_control.h"
#include "tier/codes/aggregation_data.h"
#include "tier/codes/matrix_check.h"
#include "tier/codes/parameter_file.h"
#include "tier/codes/setup_data.h"
#include "tier/codes/solve_data.h"
#include "tier/codes/tier_input.h"
#include "tier/report/aggregation_report.h"
#include "tier/report/dump.h"
#include "tier/report/performance_meter.h"
#include "tier/report/setup_report.h"
#include "tier/report/solver_report.h"
#include "tier/report/workcount_report.h"
#include "tier/setup/create_levels.h"
#include "tier/solve/norms.h"
#include "tier/solve/tier_solve.h"
#include "tier/store/dimensions.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/log_file.h"
#include "tier/store/parameters.h"
#include "tier/store/results_of_run.h"
#include "tier/store/threads.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

constexpr int level_of_dump = 2;

void start_call(const call_arguments& call, run_results& results) {
  if (solver().calls == 0) clear_timers();
  start_call_timers();
  ++solver().calls;
  clear_warning();
  memory().memi = memory().nisum;
  memory().memd = memory().ndsum;
  last_call() = call_figures();
  results = run_results();
  if (parm().ntake_res_in != 0) results.res_in = call.res_in;
  set_max_threads(parm().omp_num_threads_external);
}

void refuse_block_scaling() {
  if (parm().block_scale == 0) return;
  parm().block_scale = 0;
  warn(warn_setting_adjusted, "block scaling requested but not computed.");
  info(message_class::warning, "Reset block_scale=0 (tier-main)");
}

/// The matrix transformations that iforce0 can ask for.
void check_transformation(const controls& c, int matrix) {
  constexpr int first_scalar = 4, last_scalar = 7, unknown = 8;
  const int code = code_of(c.iforce0);
  const std::string number = std::to_string(code);
  if (code >= first_scalar && code <= last_scalar && c.nsys > 1)
    fail(ierr_illegal_value,
         "Setting of parameter <iforce0-" + number + "> only legal if NSYS=1 (tier_main)!");
  switch (c.iforce0) {
    case transformation::none:
    case transformation::remove_zeros:
      return;
    case transformation::scale_rows:
    case transformation::scale_columns:
      if (digits_of<4>(matrix)[4] != 0) not_released("matrix: scaling digits of iforce0=" + number);
      return;
  }
  if (code == unknown) fail(ierr_illegal_value, "Illegal value of parameter <iforce0> in (tier_main)!");
  not_released("iforce0=" + number);
}

bool by_aggregation() { return parm().naggregation != 0; }

/// What aggregation can't do is told before the system is touched.
void check_aggregation(const controls& c) {
  require_legal(parm().naggregation == 1, "naggregation");
  options_of_aggregation(c);
  require_consistent(modification(c) == 0, "modify_mat: aggregation takes the matrix as it is");
}

/// Everything that can be found wrong before work begins; the caller's arrays are only read.
controls check_call(const call_arguments& call) {
  controls c = tier_input(call);
  check_matrix(call, c);
  c.npnts = count_points(call, c);
  print_banner(c);
  check_transformation(c, call.matrix);
  test_matrix(call, c);
  if (by_aggregation())
    check_aggregation(c);
  else
    check_points(call, c);
  return c;
}

/// A re-start finds the coarsest-level solver that the set-up decided on.
void take_over_coarsest_solver(controls& c) {
  if (c.nrc == solver().nrc_asked) c.nrc = solver().nrc_used;
}

void note_coarsest_solver(coarsest_solver asked, coarsest_solver used) {
  const int before = code_of(solver().nrc_used);
  if (before != 0 && before != code_of(used))
    info(message_class::note,
         "CL solver switched from " + std::to_string(before) + " to " + std::to_string(code_of(used)));
  solver().nrc_asked = asked;
  solver().nrc_used = used;
}

void make_levels(hierarchy& h, controls& c) {
  if (is_one_level(c.igam) || by_aggregation()) {
    h.levels_created = h.levels_used = 1;
    if (by_aggregation()) aggregation::set_up(solver().aggregates, h(1), c, options_of_aggregation(c));
    return;
  }
  const setup_options o = options_of_setup(c);
  report_choices(c, o);
  if (c.levelx == 1 && c.dump_level >= 0) message("One level method requested by user (levelx=1).");
  create_levels(h, c, o);
}

void finish_call(call_state& s) {
  if (s.c.iswit == run_kind::set_up_once) {
    clean_up("Work_count_/_Cleanup");
    if (memory().nisum != 0 || memory().ndsum != 0) {
      info(message_class::warning, "Inconsistency in memory counter:");
      warn(warn_memory_counters, "Integers left: " + std::to_string(memory().nisum) +
                                     ", Doubles left: " + std::to_string(memory().ndsum));
    }
  }
  release_level_one(solver().levels(1), solver().scaling);
}

/// The caller learns of the residuals of his own system, and where their reduction is less than he asked for.
void take_original_residuals(call_state& s) {
  if (s.original_res_in < 0.0) return;
  s.results.res_in = s.original_res_in;
  s.results.res_out = s.original_res_out;
  // The control layer may have changed the eps of the controls since.
  const double target = stop_target(s.call.eps, parm().eps_abs, s.original_res_in);
  if (s.original_res_out <= target) return;
  warn(warn_original_residual,
       formatted("Residual of the unmodified system %.3e, above its target %.3e (tier_main)!",
                 s.original_res_out, target));
}

void run_call(call_arguments& call, run_results& results) {
  if (open_logfile() != 0) fail(ierr_internal, "A problem with a specified logfile occurred (tier_main)!");
  start_call(call, results);
  if (call.iswtch == 0) return;
  refuse_block_scaling();

  call_state s{call, check_call(call), results};
  try {
    call.a_cmplx = s.c.a_cmplx;
    call.g_cmplx = s.c.g_cmplx;
    call.p_cmplx = s.c.p_cmplx;
    call.w_avrge = s.c.w_avrge;
    bind_level_one(solver().levels(1), call, s.c);
    tier_cntrl(s);
    take_original_residuals(s);
    finish_call(s);
  } catch (...) {
    results = s.results;
    throw;
  }
  results = s.results;
}

/// Residual of the caller's own system.
double original_residual(const call_state& s) {
  level original;
  bind_level_one(original, s.call, s.c);
  return resid(original, original.f, original.u, s.c.norm_typ);
}

/// u is the caller's again however the solution ends.
struct restore_at_exit {
  level& fine;
  ~restore_at_exit() { restore_solution(solver().scaling, fine.n, fine.u); }
};

void note_memory() {
  const auto integers = static_cast<double>(memory().nisum), reals = static_cast<double>(memory().ndsum);
  last_call().integer_megabytes = megabytes_of_integers(integers);
  last_call().real_megabytes = megabytes_of_reals(reals);
  last_call().peak_megabytes = megabytes_of_integers(static_cast<double>(memory().memi)) +
                               megabytes_of_reals(static_cast<double>(memory().memd));
}

void note_set_up(const call_state& s, double start) {
  last_call().complexity =
      by_aggregation() ? measure(solver().aggregates, s.c.nna) : measure(solver().levels, s.c);
  last_call().setup_seconds += elapsed_time() - start;
  add_time(phase::setup, elapsed_time() - start);
}

void solve_by_levels(call_state& s) {
  const solve_options o = solve_data(s.c);
  print_solver_information(solver().levels, s.c);
  const restore_at_exit restore{solver().levels(1)};
  tier_solve(solver().levels, s.c, o, s.results);
}

void solve_by_aggregation(call_state& s) {
  print_aggregation_solver(solver().aggregates, s.c);
  tier_solve(solver().levels, s.c, options_of_solution(s.c), s.results,
             [](accelerated_run& run) { aggregation::flexible_cg(run, solver().aggregates); });
  print_aggregation_restarts(solver().aggregates, s.c);
}

void trace_exit(const char* words, int ierr) {
  say_if_possible([=] { trace(trace_topic::call, words + std::to_string(ierr)); });
}

}  // namespace

double first_guess_residual(const call_state& s) {
  const level& fine = solver().levels(1);
  return resid(fine, fine.f, fine.u, s.c.norm_typ);
}

void full_set_up(call_state& s) {
  const double start = elapsed_time();
  partial_clean_up("New_setup");
  parm().refresh_called = false;
  level& fine = solver().levels(1);
  bind_level_one(fine, s.call, s.c);
  modify_level_one(fine, solver().scaling, s.c);
  tier_dimensions(s.c);
  const coarsest_solver asked = s.c.nrc;
  make_levels(solver().levels, s.c);
  note_coarsest_solver(asked, s.c.nrc);
  if (s.c.dump_level >= level_of_dump) dump_hierarchy(solver().levels);

  solver().set_up_since_start = true;
  solver().struct_ident_at_set_up = parm().struct_ident;
  if (s.c.iswit == run_kind::set_up_and_keep) {
    solver().hierarchy_present = true;
    solver().last_set_up = descriptors_of(s.call, s.c);
  }
  note_set_up(s, start);
  if (by_aggregation())
    print_aggregation(solver().aggregates, s.c);
  else
    print_setup_statistics(solver().levels, s.c);
}

void re_start(call_state& s) {
  const double start = elapsed_time();
  check_re_start(s.call, s.c);
  take_over_coarsest_solver(s.c);
  modify_level_one(solver().levels(1), solver().scaling,
                   s.c);  // the kept hierarchy is that of the modified matrix
  if (s.c.iswit == run_kind::new_operators) {
    info(message_class::note, "TIER re-start: Recomputing coarse-level operators");
    if (!parm().lu_reuse) release_solution_data();
    if (by_aggregation())
      aggregation::renew(solver().aggregates, solver().levels(1));
    else
      recompute_operators(solver().levels, options_of_operators(s.c));
  } else {
    info(message_class::note, "TIER re-start: Coarse-levels not changed.");
  }
  note_set_up(s, start);
}

void solve(call_state& s) {
  const double start = elapsed_time();
  level& fine = solver().levels(1);
  first(s.c.ifirst, fine.n, fine.u);
  const bool modified = modification(s.c) != 0;
  if (modified && s.original_res_in < 0.0) s.original_res_in = original_residual(s);
  scale_first_guess(solver().scaling, fine.n, fine.u);
  by_aggregation() ? solve_by_aggregation(s) : solve_by_levels(s);
  last_call().solve_seconds += elapsed_time() - start;
  last_call().cycles = s.results.ncyc_done;
  add_time(phase::solve, elapsed_time() - start);
  note_memory();
  print_workcount(s.c, s.results);
  if (!modified) return;
  s.original_res_out = original_residual(s);
  print_restored_residuals(s.c, s.original_res_in, s.original_res_out);
}

int ierr_of(const std::function<int()>& work) {
  try {
    return work();
  } catch (const failure& f) {
    return f.ierr;
  } catch (const std::bad_alloc&) {
    say_if_possible([] { info(message_class::error, "Allocation/Deallocation failed in (tier)"); });
    return ierr_allocation;
  } catch (const std::exception& e) {
    say_if_possible(
        [&e] { info(message_class::error, std::string("Unexpected fault in (tier): ") + e.what()); });
    return ierr_internal;
  }
}

int tier_main(call_arguments& call, run_results& results) {
  const double start = elapsed_time();
  const int ierr = ierr_of([&] {
    read_input_parms(call);
    start_performance_meter();
    run_call(call, results);
    print_performance_meter();
    return last_warning();
  });
  if (ierr > 0) {
    clean_up("Error_in_tier_main");
    last_call().complexity.levels = solver().levels.levels_created;
  }
  last_call().total_seconds = elapsed_time() - start;
  last_call().nflag = ierr;
  trace_exit(ierr > 0 ? "leaving tier_main, ierr " : "leaving tier_main (regular exit), ierr ", ierr);
  flush_output();
  return ierr;
}

}  // namespace tier
