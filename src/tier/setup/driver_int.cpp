// Interpolation step of a level.
#include "tier/setup/driver_int.h"

#include <string>

#include "tier/setup/pbint.h"
#include "tier/setup/pwint_aa.h"
#include "tier/setup/setup_state.h"
#include "tier/store/formatted.h"
#include "tier/store/info.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

interpolation_options options_of(const setup_state& t) {
  interpolation_options o = t.o.interpolation;
  o.nprim = t.effective_nprim();
  if (o.kind == interpolation_kind::extended && o.ewt2 == 0.0) {
    if (t.reports()) message("Extended interpolation de-activated (etw2 not set)!");
    o.kind = interpolation_kind::standard;
  }
  return o;
}

/// Ratio and mean length of fine rows, after the changes of the interpolation.
void record_rows(const level& lv, level_record& r) {
  int c = 0, fine = 0;
  for (int i = 1; i <= lv.n; ++i) {
    c += lv.icg[i] > 0;
    fine += lv.icg[i] < 0 && lv.icg[i] != state_not_taking_part;
  }
  const int weights = lv.iw[lv.n + 1] - 1 - c;
  r.ratio = static_cast<double>(c) / lv.n;
  r.mean_weights = fine == 0 ? 0.0 : static_cast<double>(weights) / fine;
}

void print_rows(const level_record& r, interpolation_kind kind) {
  const multipass_counts& n = r.multipass;
  const std::string changes = n.attempts > 0 ? formatted("  #att=%d #passes=%d", n.attempts, n.passes)
                                             : formatted("   #vars->C= %d", r.turned_c);
  message(
      formatted("pwint_aa(%d):   gratio= %8.6f avrg wghts= %8.6f", code_of(kind), r.ratio, r.mean_weights) +
      changes);
}

void report_improvement(const improvement_counts& n) {
  if (n.truncated_by_sign > 0) info(message_class::note, "Truncation failed - repeat with ntrunc=2");
  if (n.all_connections > 0) info(message_class::note, "Bad interpolation - retry using ALL connections");
}

/// Interpolation of scalar rows, by passes, improved and handed to other unknowns as asked.
void interpolate_variables(setup_state& t, int k) {
  level& lv = t.h(k);
  level_record& r = t.record.at[k];
  interpolation_options o = options_of(t);
  {
    const timed time(phase::pwint);
    if (o.kind == interpolation_kind::multipass) {
      r.multipass = pwint2_aa(lv, o, t.own_unknown(), t.by_points());
      r.turned_c = r.multipass.turned_c;
    } else {
      r.turned_c = pwint1_aa(lv, o, t.own_unknown(), t.by_points());
    }
  }
  const improvement_options& improvement = t.o.improvement;
  if (k <= improvement.levels && improvement.steps > 0) {
    const timed time(phase::pwiter);
    o.etr = improvement.truncation;
    for (int step = 0; step < improvement.steps; ++step)
      report_improvement(pwiter(lv, o, t.own_unknown(), t.by_points()));
  }
  if (t.by_points() && t.c.nint_force == point_interpolation::same) pwforce(lv, t.c.nprim);
}

void interpolate_blocks(setup_state& t, int k) {
  const timed time(phase::pwint);
  level& lv = t.h(k);
  block_options o;
  o.kind = t.o.interpolation.kind;
  o.nprim = t.c.nprim;
  o.norm = t.o.primary.norm;
  o.etr = t.o.interpolation.limits != truncation::none ? t.o.interpolation.etr : 0.0;
  o.may_eliminate = t.o.blocks_may_eliminate;
  o.use_primary_matrix = t.uses_primary_matrix();
  int& turned = t.record.at[k].turned_c;
  turned = o.kind == interpolation_kind::multipass ? pbint2(lv, o) : pbint1(lv, o);
}

}  // namespace

void driver_int(setup_state& t, int k) {
  level_record& r = t.record.at[k];
  if (t.by_points() && t.c.nint_force == point_interpolation::block_wise) {
    interpolate_blocks(t, k);
  } else {
    interpolate_variables(t, k);
  }
  record_rows(t.h(k), r);
  if (t.reports()) print_rows(r, t.o.interpolation.kind);
}

}  // namespace tier
