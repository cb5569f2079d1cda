// Interpolation step of a level.
#include "tier/setup/driver_int.h"

#include <cstdio>

#include "tier/frame/info.h"
#include "tier/frame/parameters.h"
#include "tier/frame/timers.h"
#include "tier/setup/pwint_aa.h"

namespace tier {

namespace {

interpolation_options options_of(const setup_state& t) {
  interpolation_options o;
  o.nwtint = t.s.nwtint;
  o.etr = t.s.etr1;
  o.ntr1 = t.c.ntr1;
  o.ewt2 = t.s.ewt2;
  o.nprim = t.effective_nprim();
  o.unit_row_sum = parm::nint_rowsum1 == 1;
  if (o.nwtint == 3 && o.ewt2 == 0.0) {
    if (t.reports()) message("Extended interpolation de-activated (etw2 not set)!");
    o.nwtint = 2;
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

void print_rows(const level_record& r, int nwtint) {
  char line[160];
  std::snprintf(line, sizeof line, "pwint_aa(%d):   gratio= %8.6f avrg wghts= %8.6f   #vars->C= %d", nwtint,
                r.ratio, r.mean_weights, r.turned_c);
  message(line);
}

}  // namespace

coarsening driver_int(setup_state& t, int k) {
  const timed time(phase::pwint);
  level& lv = t.h(k);
  level_record& r = t.record.at[static_cast<std::size_t>(k)];
  const interpolation_options o = options_of(t);
  r.turned_c = pwint1_aa(lv, o, t.own_unknown(), t.by_points());
  record_rows(lv, r);
  if (t.reports()) print_rows(r, o.nwtint);
  return coarsening::goes_on;
}

}  // namespace tier
