// Strength step of a level.
#include "tier/setup/strength.h"

#include "tier/setup/coarsening_stop.h"
#include "tier/setup/primary.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

strength_options options_of(const setup_state& t, int nprim) {
  strength_options o = t.o.strength;
  o.nprim = nprim;
  o.report = t.reports();
  return o;
}

strength_counts sort_rows(const setup_state& t, const couplings& m, int nprim) {
  const timed time(phase::rwsrt);
  const strength_options o = options_of(t, nprim);
  const strength_counts n = rwsrt(m, o);
  if (t.reports()) print_strength_counts(n, o.kind);
  return n;
}

coarsening test_couplings(setup_state& t, const level& lv, const strength_counts& n) {
  if (!n.all_dominated && n.strong > 0) return coarsening::goes_on;
  apply_emergency_rule(t, lv.n);
  if (!n.all_dominated) return stop_coarsening(t, "no strong connections");
  return stop_coarsening(t, formatted("diagonal dominance, eps=%.3g", t.o.strength.eps));
}

[[noreturn]] void inconsistent(const char* text) { fail(ierr_inconsistent_input, text); }

}  // namespace

void check_approach(const controls& c) {
  const bool by_variables = c.nstyp == approach::by_variables, by_unknowns = c.nstyp == approach::by_unknowns,
             by_points = c.nstyp == approach::by_points;
  const bool primary_of_its_own = c.internal != primary_matrix::of_primary_unknown;
  if (by_variables && c.nprim != 0) inconsistent("Incorrect INTERNAL setting: nprim must be 0 for nstyp=1 !");
  if (by_variables && norm_based(c)) inconsistent("Norm-based approach not meaningful for nstyp=1!");
  if (by_unknowns && primary_of_its_own)
    inconsistent("Unknown-based approaches do not allow for an internally defined primary matrix!");
  if (by_unknowns && c.nprim != 0)
    inconsistent("Primary variables make sense only in point-based approaches!");
  if (by_points && !primary_of_its_own && c.nprim == 0)
    inconsistent(
        "If no internal primary matrix is selected, point-based "
        "approaches require the setting of a primary variable!");
  if (by_points && c.nint_force == point_interpolation::same && c.nprim == 0)
    fail(ierr_missing_variable, "Selected approach requires setting of primary variable!");
}

couplings primary_couplings(level& lv) { return {lv.npnts, lv.ib, lv.jb, lv.b, {}}; }

void check_released(const controls& c, const setup_options& o) {
  constexpr int most_paths = 4;
  if (o.splitting.paths > most_paths) not_released("nred");
  if (c.internal == primary_matrix::distances)
    fail(ierr_missing_variable, "No coordinates available (setup_i)!");
  if (c.internal == primary_matrix::positions)
    fail(ierr_not_released, "Requested approach not yet implemented!");
  if (c.internal >= primary_matrix::test) not_released("internal");
  if (c.nint_weights == weight_source::distances || c.nint_weights == weight_source::positions)
    fail(ierr_missing_variable, "Coordinates are not available (pwint1_ca)");
  if (c.nint_weights == weight_source::spectral_norm)
    fail(ierr_not_released, "Selected type of interpolation weights not yet implemented!");
  if (c.nint_weights != weight_source::entries || c.nint_pat != weight_pattern::of_matrix)
    fail(ierr_not_released, "Requested type of interpolation not (yet) released (driver_int)");
  if (o.improvement.steps > 0 && c.nstyp == approach::by_points &&
      c.nint_force == point_interpolation::block_wise)
    fail(ierr_not_released, "Requested Jacobi interpolation not (yet) released (driver_int)");
}

coarsening find_strong_couplings(setup_state& t, int k) {
  level& lv = t.h(k);
  if (test_size(t, lv) == coarsening::stops) return coarsening::stops;
  check_approach(t.c);
  check_released(t.c, t.o);
  strength_counts& n = t.record.at[k].strength;
  if (!t.uses_primary_matrix()) {
    n = sort_rows(t, couplings_of(lv, t.own_unknown()), t.effective_nprim());
    return test_couplings(t, lv, n);
  }
  {
    const timed time(phase::primmat);
    build_primary_matrix(lv, t.o.primary);
  }
  n = sort_rows(t, primary_couplings(lv), 0);
  if (test_couplings(t, lv, n) == coarsening::stops) return coarsening::stops;
  t.split_matrix =
      t.c.nint_force != point_interpolation::block_wise || t.o.splitting.unusable_points_become_c;
  if (t.split_matrix) sort_rows(t, couplings_of(lv, true), t.effective_nprim());
  return coarsening::goes_on;
}

}  // namespace tier
