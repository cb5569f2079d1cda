// The level loop of set-up.
#include "tier/setup/create_levels.h"

#include <algorithm>
#include <string>

#include "tier/setup/coarsening_stop.h"
#include "tier/setup/driver_int.h"
#include "tier/setup/driver_split.h"
#include "tier/setup/galerkin_step.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/strength.h"
#include "tier/store/dimensions.h"
#include "tier/store/formatted.h"
#include "tier/store/info.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

const per_context<setup_record> latest;

/// Gives the level's rows their numbers back in the diagonals' slots, also when an error leaves the level.
class diagonal_guard {
 public:
  explicit diagonal_guard(level& lv) : lv_(lv) {}
  ~diagonal_guard() { restore_diagonals(lv_.n, lv_.ia, lv_.ja); }
  diagonal_guard(const diagonal_guard&) = delete;
  diagonal_guard& operator=(const diagonal_guard&) = delete;

 private:
  level& lv_;
};

void release_level(level& lv) { lv = level(); }

void release_interpolation(level& lv) {
  lv.icg.release();
  lv.iw.release();
  lv.jw.release();
  lv.w.release();
}

/// The primary matrix serves its own level's coarsening alone.
void release_points(level& lv) {
  const bool had_matrix = lv.ib.size() > 0;
  lv.primary_rows = had_matrix ? lv.npnts : 0;
  lv.primary_entries = had_matrix ? lv.ib[lv.npnts + 1] - 1 : 0;
  lv.ibcg.release();
  lv.ib.release();
  lv.jb.release();
  lv.b.release();
}

void announce(const setup_state& t, int k, bool aggressive) {
  if (!t.reports()) return;
  const std::string variety =
      aggressive ? " using AGGRESSIVE A" + std::to_string(t.o.splitting.paths) + "-COARSENING"
                 : " using STANDARD COARSENING";
  message("creating level #" + std::to_string(k) + variety);
}

/// Strength, split and interpolation of level k.
coarsening coarsen(setup_state& t, int k, bool aggressive) {
  const diagonal_guard guard(t.h(k));
  if (find_strong_couplings(t, k) == coarsening::stops) return coarsening::stops;
  if (driver_split(t, k, aggressive) == coarsening::stops) return coarsening::stops;
  driver_int(t, k);
  // Interpolation may have turned so many F-variables into C that the next level would be this one again.
  const level_record& made = t.record.at[k];
  return made.turned_c > 0 ? test_ratio(t, k, made.ratio, "(int)") : coarsening::goes_on;
}

/// Statistics of a new level, where the first digit of mode_debug asks for them.
void print_matrix(const setup_state& t, int k) {
  if (!t.reports() || !t.o.prints_matrices) return;
  const level& lv = t.h(k);
  int shortest = lv.entries(), longest = 0;
  for (int i = 1; i <= lv.n; ++i) {
    shortest = std::min(shortest, lv.ia[i + 1] - lv.ia[i]);
    longest = std::max(longest, lv.ia[i + 1] - lv.ia[i]);
  }
  message(formatted("level #%d: rows= %d entries= %d row lengths min/avrg/max= %d/%.2f/%d", k, lv.n,
                    lv.entries(), shortest, static_cast<double>(lv.entries()) / lv.n, longest));
}

void make_next_level(setup_state& t, int k) {
  {
    const timed time(phase::opdfn);
    prepare_opdfn(t.h(k), t.h(k + 1));
    form_operator(t.h, k, t.o.galerkin);
  }
  release_points(t.h(k));
  print_matrix(t, k + 1);
}

/// Returns the number of levels.
int level_loop(setup_state& t) {
  const int wanted = t.o.limits.most_levels;
  int k = 1;
  for (; k < wanted; ++k) {
    t.warn_slow = t.reports();
    const bool aggressive = t.o.splitting.is_aggressive(k);
    announce(t, k + 1, aggressive);
    if (coarsen(t, k, aggressive) == coarsening::stops) {
      release_interpolation(t.h(k));
      release_points(t.h(k));
      break;
    }
    make_next_level(t, k);
    check_dimensions(t.h, k + 1, t.c);
  }
  if (wanted > 1) apply_emergency_rule(t, t.h(k).n);
  return k;
}

/// Corrections and right-hand sides of the coarse levels.
void allocate_vectors(hierarchy& h, int levels) {
  for (int k = 2; k <= levels; ++k) {
    level& lv = h(k);
    lv.own_u.allocate(lv.n, 0.0, "u", "create_levels");
    lv.own_f.allocate(lv.n, 0.0, "f", "create_levels");
    lv.u = lv.own_u;
    lv.f = lv.own_f;
  }
}

}  // namespace

const setup_record& latest_setup() { return latest(); }

void create_levels(hierarchy& h, controls& c, const setup_options& o) {
  latest() = setup_record();
  setup_state t{h, c, o, latest()};
  h.levels_created = h.levels_used = -1;
  try {
    if (t.by_points()) set_points(h(1));
    const int levels = level_loop(t);
    allocate_vectors(h, levels);
    h.levels_created = h.levels_used = levels;
    trace(trace_topic::set_up, " crsng - std_return");
  } catch (const failure& error) {
    trace(trace_topic::set_up, " crsng - error_exit, nflag " + std::to_string(error.ierr));
    release_interpolation(h(1));
    for (int k = 2; k <= max_levels; ++k) release_level(h(k));
    throw;
  }
}

void recompute_operators(hierarchy& h, const galerkin_options& o) {
  const timed time(phase::opdfn);
  for (int k = 1; k < h.levels_created; ++k) form_operator(h, k, o);
}

}  // namespace tier
