// Strength step of a level.
#include "tier/setup/strength.h"

#include <algorithm>

#include "tier/frame/ierr.h"
#include "tier/frame/info.h"
#include "tier/frame/parameters.h"
#include "tier/frame/timers.h"
#include "tier/setup/stopping.h"
#include "tier/setup/weight_assembly.h"

namespace tier {

namespace {

strength_options options_of(const setup_state& t, int nprim) {
  strength_options o;
  o.ncgtyp = t.s.ncgtyp;
  o.ecg1 = t.s.ecg1;
  o.ecg2 = t.s.ecg2;
  o.ewt1 = t.s.ewt1;
  o.ewt2 = t.s.ewt2;
  o.eps = std::max(parm::eps_dd, t.s.ecg1);
  o.nprim = nprim;
  o.report = t.reports();
  return o;
}

strength_counts sort_rows(const setup_state& t, const couplings& m, int nprim) {
  const timed time(phase::rwsrt);
  const strength_options o = options_of(t, nprim);
  const strength_counts n = rwsrt(m, o);
  if (t.reports()) print_strength_counts(n, o.ncgtyp);
  return n;
}

coarsening test_couplings(setup_state& t, const level& lv, const strength_counts& n) {
  if (!n.all_dominated && n.strong > 0) return coarsening::goes_on;
  apply_emergency_rule(t.c, lv.n);
  if (!n.all_dominated) return stop_coarsening(t, "no strong connections");
  char limit[32];
  std::snprintf(limit, sizeof limit, "%.3g", std::max(parm::eps_dd, t.s.ecg1));
  return stop_coarsening(t, std::string("diagonal dominance, eps=") + limit);
}

[[noreturn]] void inconsistent(const char* text, const char* second = nullptr) {
  info(message_class::error, text);
  if (second) info(message_class::error, second);
  throw failure{ierr_inconsistent_input};
}

}  // namespace

void check_approach(const controls& c) {
  if (c.nstyp == 1 && c.nprim != 0) inconsistent("Incorrect INTERNAL setting: nprim must be 0 for nstyp=1 !");
  if (c.nstyp == 2 && c.internal > 0)
    inconsistent("Unknown-based approaches do not allow for an", "internally defined primary matrix!");
  if (c.nstyp == 2 && c.nprim != 0)
    inconsistent("Primary variables make sense only in point-based approaches!");
  if (c.nstyp == 3 && c.internal == 0 && c.nprim == 0)
    inconsistent("If no internal primary matrix is selected, point-based",
                 "approaches require the setting of a primary variable!");
}

coarsening find_strong_couplings(setup_state& t, int k) {
  level& lv = t.h(k);
  if (test_size(t, lv) == coarsening::stops) return coarsening::stops;
  check_approach(t.c);
  strength_counts& n = t.record.at[static_cast<std::size_t>(k)].strength;
  n = sort_rows(t, couplings_of(lv, t.own_unknown()), t.effective_nprim());
  return test_couplings(t, lv, n);
}

}  // namespace tier
