// Rules that end coarsening.
#include "tier/setup/coarsening_stop.h"

#include "tier/setup/setup_state.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier {

namespace {

constexpr int least_variables = 3;  // of either state

std::string less_than(const setup_state& t, const char* variables, const char* points) {
  return "less than" + std::to_string(least_variables) + (t.by_points() ? points : variables);
}

coarsening stop_after_split(setup_state& t, const level& lv, const std::string& reason) {
  apply_emergency_rule(t, lv.n);
  return stop_coarsening(t, reason);
}

}  // namespace

coarsening stop_coarsening(setup_state& t, const std::string& reason) {
  t.record.stop = reason;
  if (t.reports()) message(">>> Coarsening stopped: " + reason);
  return coarsening::stops;
}

void apply_emergency_rule(setup_state& t, int variables) {
  controls& c = t.c;
  const bool direct = c.nrc >= coarsest_solver::full_gauss && c.nrc <= coarsest_solver::not_served;
  if (variables > t.o.limits.largest_direct && direct) c.nrc = t.o.limits.otherwise;
}

coarsening test_size(setup_state& t, const level& lv) {
  if (lv.n <= t.o.limits.small) return stop_coarsening(t, "low # variables");
  const double n = lv.n;
  if (lv.entries() / (n * n) >= t.o.limits.density && lv.n <= t.o.limits.largest_direct)
    return stop_coarsening(t, "high density");
  return coarsening::goes_on;
}

coarsening test_fine_count(setup_state& t, const level& lv, const split_counts& n) {
  if (n.f >= least_variables) return coarsening::goes_on;
  return stop_after_split(t, lv,
                          less_than(t, " F-variables (not including FF)", " F-points (not including FF)"));
}

coarsening test_split(setup_state& t, const level& lv, const split_counts& n) {
  if (n.c < least_variables)
    return stop_after_split(t, lv, less_than(t, " C-variables (including FC)", " C-points (including FC)"));
  return test_fine_count(t, lv, n);
}

coarsening test_coarse_size(setup_state& t, const level& lv, double c_variables) {
  if (c_variables > t.o.limits.small || lv.n > t.o.limits.largest_direct) return coarsening::goes_on;
  return stop_after_split(t, lv, "low # C-variables");
}

coarsening test_ratio(setup_state& t, int k, double ratio, const char* label) {
  const auto report = [&t](const std::string& text) {
    if (t.reports()) message(text);
  };
  if (t.o.limits.enforced > 0 && t.o.limits.enforced == k) {
    report(std::string("coarsening too slow enforced! ") + label);
    t.record.stop = "too slow, enforced";
    apply_emergency_rule(t, t.h(k - 1).n);
    return coarsening::stops;
  }
  if (ratio < t.o.limits.slow) return coarsening::goes_on;
  if (ratio >= t.o.limits.too_slow) {
    warn(warn_slow_coarsening, std::string("Coarsening terminated: inefficient grid reduction! ") + label);
    t.record.stop = "inefficient grid reduction";
    apply_emergency_rule(t, t.h(k - 1).n);
    return coarsening::stops;
  }
  if (t.warn_slow) info(message_class::warning, std::string("Inefficient coarsening! ") + label);
  t.warn_slow = false;
  return coarsening::goes_on;
}

}  // namespace tier
