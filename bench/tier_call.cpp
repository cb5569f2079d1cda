// The call itself.
#include "tier_call.h"

#include <cstdio>
#include <ctime>

#include "tier.h"

namespace bench {

namespace {

double processor_time() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

}  // namespace

tier_outcome call_tier(const linear_system& system, const tier_settings& settings) {
  linear_system s = system;  // set-up reorders rows
  std::vector<double> u(s.f.size(), 0.0);
  if (s.functions == 1) s.iu = s.ip = {1};
  const int nna = static_cast<int>(s.ja.size()), ndiu = static_cast<int>(s.iu.size());
  const int ifirst = 0, off = -1, quiet = -2;
  const std::vector<int> iscale(static_cast<std::size_t>(s.functions), 0);
  const double eps = 1e-8, chktol = -1.0;
  double res_in = 0.0, res_out = 0.0, a = 0.0, g = 0.0, p = 0.0, w = 0.0;
  TIER_SET_MODE_MESS(&quiet);
  TIER_SET_NTYP_GALERKIN(&settings.galerkin_variant);
  TIER_SET_NRD(&settings.nrd);
  TIER_SET_NRU(&settings.nru);
  tier_outcome out;
  const double start = processor_time();
  TIER(&s.n, &nna, &s.functions, s.ia.data(), s.ja.data(), s.a.data(), s.f.data(), u.data(), s.iu.data(),
       &ndiu, s.ip.data(), &ndiu, &settings.matrix, iscale.data(), &res_in, &res_out, &out.steps, &out.ierr,
       &settings.nsolve, &ifirst, &eps, &settings.ncyc, &settings.iswtch, &a, &g, &p, &w, &chktol, &off,
       &off);
  out.processor_seconds = processor_time() - start;
  if (out.ierr != 0) std::fprintf(stderr, "TIER returned %d on %s\n", out.ierr, s.name.c_str());
  double times[8], complexities[11];
  TIER_GET_TIME_AND_MEM(times);
  TIER_GET_COMPLEXITIES(&out.levels, complexities);
  out.setup = times[0];
  out.solution = times[1];
  out.operator_complexity = complexities[0];
  out.residual = relative_residual(system, u);
  return out;
}

}  // namespace bench
