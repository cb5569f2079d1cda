// Splitting step of a level.
#include "tier/setup/driver_split.h"

#include "tier/frame/parameters.h"
#include "tier/frame/timers.h"
#include "tier/setup/stopping.h"
#include "tier/setup/weight_assembly.h"

namespace tier {

namespace {

constexpr int last_threaded_level = 3;  // beyond it the first pass runs serially

bool splits_in_threads(int k) {
  if (parm::icolor_omp < 1 || k > last_threaded_level) return false;
  return parm::icolor_omp >= 5 || max_threads() > 1;
}

pcol_options first_pass_options(const setup_state& t, int k) {
  pcol_options o;
  o.nxf_clean = t.s.nxf_clean;
  o.iset_vio_dd = parm::iset_vio_dd;
  o.nprim = t.c.nprim;
  o.threads = splits_in_threads(k);
  return o;
}

}  // namespace

coarsening driver_split(setup_state& t, int k, bool) {
  level& lv = t.h(k);
  lv.icg.allocate(lv.n, "icg", "driver_split");
  split_counts& n = t.record.at[static_cast<std::size_t>(k)].split;
  {
    const timed time(phase::split);
    n = pcol(couplings_of(lv, t.own_unknown()), first_pass_options(t, k), lv.icg);
  }
  if (t.reports()) print_split_counts(n, t.c.nstyp);
  if (test_split(t, lv, n) == coarsening::stops) return coarsening::stops;
  if (test_coarse_size(t, lv, n.c) == coarsening::stops) return coarsening::stops;
  return test_ratio(t, k + 1, n.ratio, "(split_3)");
}

}  // namespace tier
