// The exported entries of the solver, but for TIER_SIMPLE and the parameters.
#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <string_view>

#include "tier/aggregation/near_null.h"
#include "tier/api/tier.h"
#include "tier/call/solver_state.h"
#include "tier/call/tier_main.h"
#include "tier/frame/tier_simple.h"
#include "tier/report/performance_meter.h"
#include "tier/store/controls.h"
#include "tier/store/info.h"
#include "tier/store/log_file.h"
#include "tier/store/omega_jacobi.h"
#include "tier/store/parameters.h"
#include "tier/store/timers.h"

namespace {

std::string_view text_of(const char* text, const int* length) {
  return {text, static_cast<std::size_t>(std::max(*length, 0))};
}

float seconds(double s) { return static_cast<float>(s); }

// Exported clocks count from the first use and start anew after this time, as a counter of milliseconds does.
constexpr double clock_maximum = std::numeric_limits<int>::max() * 1e-3;

double exported_clock() {
  static const double origin = tier::elapsed_time();
  return std::fmod(tier::elapsed_time() - origin, clock_maximum);
}

}  // namespace

void TIER(const int* nnu, const int* nna, const int* nsys, const int* ia, int* ja, double* a, const double* f,
          double* u, const int* iu, const int* ndiu, const int* ip, const int* ndip, const int* matrix,
          const int* iscale, double* res_in, double* res_out, int* ncyc_done, int* ierr, const int* nsolve,
          const int* ifirst, const double* eps, const int* ncyc, const int* iswtch, double* a_cmplx,
          double* g_cmplx, double* p_cmplx, double* w_avrge, const double* chktol, const int* idump,
          const int* iout) {
  tier::call_arguments call{*nnu,  *nna,    *nsys,    ia,       ja,       a,        f,       u,       iu,
                            *ndiu, ip,      *ndip,    *matrix,  {},       *res_in,  *nsolve, *ifirst, *eps,
                            *ncyc, *iswtch, *a_cmplx, *g_cmplx, *p_cmplx, *w_avrge, *chktol, *idump,  *iout};
  call.take_iscale(iscale);
  tier::run_results results;
  *ierr = tier::tier_main(call, results);
  *res_in = results.res_in;
  *res_out = results.res_out;
  *ncyc_done = results.ncyc_done;
  *a_cmplx = call.a_cmplx;
  *g_cmplx = call.g_cmplx;
  *p_cmplx = call.p_cmplx;
  *w_avrge = call.w_avrge;
}

void TIER_LEAVE(int* ierr) {
  *ierr = 0;
  tier::clean_up("tier_leave_was_called");
  const int unit = tier::parm().logio;
  const std::string file = tier::parm().logfile;
  tier::reset_parameters();
  tier::reset_controls_of_simple();
  tier::omega_jacobi_vec() = {};
  tier::aggregation::modes_of_caller() = {};
  tier::parm().logio = unit;
  tier::parm().logfile = file;
  tier::parm().refresh_called = true;
  tier::solver().calls = 0;
  tier::solver().set_up_since_start = false;
  tier::solver().nrc_asked = tier::solver().nrc_used = {};
}

void TIER_REFRESH(int* ierr) {
  *ierr = 0;
  tier::partial_clean_up("tier_refresh_was_called");
  tier::parm().refresh_called = true;
}

void TIER_CLEANUP(int* ierr) {
  *ierr = 0;
  tier::clean_up("user_cleanup");
}

void XTIER_LEAVE(int* ierr) { TIER_LEAVE(ierr); }
void XTIER_CLEANUP(int* ierr) { TIER_CLEANUP(ierr); }

void TIER_IDEC(const int* value, const int* nnum, int* ndigit, int* digits) {
  tier::idec(*value, *nnum, *ndigit, digits);
}

void TIER_LRATIO(int* ratio) { *ratio = static_cast<int>(sizeof(double) / sizeof(int)); }

void TIER_INFO(const int* message_class, const int* blank_before, const int* blank_after, const char* text,
               const int* length) {
  tier::info(static_cast<tier::message_class>(*message_class), text_of(text, length), *blank_before,
             *blank_after);
}

void TIER_MESSAGE(const int* blank_before, const int* blank_after, const char* text, const int* length) {
  tier::message(text_of(text, length), *blank_before, *blank_after);
}

void TIER_OPEN_LOGFILE(int* ierr) { *ierr = tier::open_logfile(); }
void TIER_CLOSE_LOGFILE(void) { tier::close_logfile(); }
void TIER_FLUSH(void) { tier::flush_output(); }

void TIER_MEM_INFO(void) {
  tier::info(tier::message_class::note, "No system information on memory status available!");
}

void TIER_ELAPSED_TIME(float* t) { *t = seconds(exported_clock()); }
void TIER_CTIME(float* t) { TIER_ELAPSED_TIME(t); }
void TIER_CPUTIME(float* t) { *t = seconds(tier::cpu_time()); }
void TIER_COMPTIME(float* span, const float* t0, const float* t1) {
  *span = seconds(tier::time_span(*t0, *t1, clock_maximum));
}
void TIER_ADDTIME(float* sum, const float* t0, const float* t1) {
  *sum += seconds(tier::time_span(*t0, *t1, clock_maximum));
}

void TIER_PERFINIT(void) { tier::start_performance_meter(); }
void TIER_PERFOUT(void) { tier::print_performance_meter(); }
