// "AMG workcount and statistics".
#include "tier/report/workcount_report.h"

#include <algorithm>
#include <cmath>

#include "tier/store/parameters.h"
#include "tier/store/print_line.h"
#include "tier/store/report.h"
#include "tier/store/results_of_run.h"
#include "tier/store/timers.h"
#include "tier/store/work_arrays.h"

namespace tier {

namespace {

void print_reduction(const run_results& r) {
  const bool later = r.res0 > 0.0 && parm().ncyc_start < r.ncyc_done;
  const double reference = later ? r.res0 : r.res_in;
  const int skipped = later ? parm().ncyc_start : 0;
  if (r.ncyc_done <= skipped || !(reference > 0.0)) return;
  const double average = std::pow(r.res_out / reference, 1.0 / (r.ncyc_done - skipped));
  if (skipped > 0)
    print_line("average reduction:  %.4e  (%d cycles skipped)", average, skipped);
  else
    print_line("average reduction:  %.4e", average);
}

void print_times(const run_results& r) {
  const call_figures& f = last_call();
  print_line("amg setup time: %12.4f sec  (incl. overhead: %.4f)", f.setup_seconds, f.setup_seconds);
  print_line("time per cycle: %12.4f sec  (incl. overhead: %.4f)", f.seconds_per_cycle(),
             f.seconds_per_cycle());
  print_line("total amg time: %12.4f sec  (incl. overhead: %.4f)", f.setup_seconds + f.solve_seconds,
             f.setup_seconds + f.solve_seconds);
  message("                fixed       per cyc       total   sec  (excl. overhead)", 1);
  const double cycles = std::max(r.ncyc_done, 1);
  for (const phase p : {phase::ilu_decomposition, phase::direct_decomposition})
    print_line("    %-8s %10.4f    %10.4f  %10.4f", name_of(p), accumulated_in_call(p), 0.0,
               accumulated_in_call(p));
  for (const phase p : {phase::coarsest_solution, phase::relaxation})
    print_line("    %-8s %10.4f    %10.4f  %10.4f", name_of(p), 0.0, accumulated_in_call(p) / cycles,
               accumulated_in_call(p));
}

void print_memory(const controls& c) {
  const call_figures& f = last_call();
  const double estimated = megabytes_of_reals((c.a_cmplx + c.w_avrge) * c.nna + c.g_cmplx * 2.0 * c.nnu) +
                           megabytes_of_integers((c.a_cmplx + c.w_avrge) * c.nna + c.g_cmplx * 4.0 * c.nnu);
  const double used = f.integer_megabytes + f.real_megabytes;
  print_line("used peak memory (depends on dimensioning!): %10.3f MB", f.peak_megabytes);
  print_line("req. amg memory: %10.3f MB   provided: %10.3f MB    extended by: %10.3f MB   wasted: %10.3f MB",
             used, estimated, std::max(used - estimated, 0.0), std::max(estimated - used, 0.0));
}

}  // namespace

void print_workcount(const controls& c, const run_results& r) {
  if (c.out_level < 0) return;
  const char* tag = norm_tag(c.norm_typ).data();
  if (c.out_level >= 1) message("AMG workcount and statistics", 1);
  print_line("number of cycles :  %d", r.ncyc_done);
  print_line("%.2s-resid (before):  %.6e", tag, r.res_in);
  print_line("%.2s-resid (after) :  %.6e", tag, r.res_out);
  if (c.out_level < 1) return;
  print_reduction(r);
  print_times(r);
  print_memory(c);
}

void print_restored_residuals(const controls& c, double res_in, double res_out) {
  if (c.out_level < 0) return;
  message("Additional residual computation (stopping criterion was affected!)", 1);
  print_line("EPS   :  %.6e", c.eps);
  print_line("RES-IN:  %.6e", res_in);
  print_line("RES-OUT: %.6e", res_out);
  print_line("REDUCT:  %.6e", res_in > 0.0 ? res_out / res_in : 0.0);
}

}  // namespace tier
