// Exported getters of the figures of the last call.
#include <algorithm>
#include <iterator>

#include "tier/api/tier.h"
#include "tier/store/results_of_run.h"

void TIER_GET_COMPLEXITIES(int* levels, double* values) {
  const tier::complexities& m = tier::last_call().complexity;
  *levels = m.levels;
  const double all[] = {m.a_cmplx, m.a_avrge, m.b_cmplx, m.b_avrge, m.ib_cmplx, m.g_cmplx,
                        m.t_cmplx, m.w_avrge, m.c_cmplx, m.p_cmplx, m.e_cmplx};
  std::copy(std::begin(all), std::end(all), values);
}

void TIER_GET_LEVELS_CREATED(int* levels) { *levels = tier::last_call().complexity.levels; }
void TIER_GET_NFLAG(int* nflag) { *nflag = tier::last_call().nflag; }
void TIER_GET_MEM_ACTIVE(double* megabytes) { *megabytes = tier::megabytes_in_use(); }

void TIER_GET_TIME_AND_MEM(double* values) {
  const tier::call_figures& f = tier::last_call();
  const double all[] = {f.setup_seconds,  f.solve_seconds,         f.seconds_per_cycle(),
                        f.total_seconds,  f.integer_megabytes,     f.real_megabytes,
                        f.peak_megabytes, tier::megabytes_in_use()};
  std::copy(std::begin(all), std::end(all), values);
}
