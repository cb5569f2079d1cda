// The level loop of set-up.
#include "tier/setup/create_levels.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tier/frame/info.h"
#include "tier/frame/parameters.h"
#include "tier/frame/timers.h"
#include "tier/setup/driver_int.h"
#include "tier/setup/driver_split.h"
#include "tier/setup/opdfn.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/stopping.h"
#include "tier/setup/strength.h"

namespace tier {

namespace {

setup_record latest;

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

void announce(const setup_state& t, int k, bool aggressive) {
  if (!t.reports()) return;
  const std::string variety = aggressive ? " using AGGRESSIVE A" + std::to_string(t.s.nred) + "-COARSENING"
                                         : " using STANDARD COARSENING";
  message("creating level #" + std::to_string(k) + variety);
}

/// Strength, split and interpolation of level k.
coarsening coarsen(setup_state& t, int k, bool aggressive) {
  const diagonal_guard guard(t.h(k));
  if (find_strong_couplings(t, k) == coarsening::stops) return coarsening::stops;
  if (driver_split(t, k, aggressive) == coarsening::stops) return coarsening::stops;
  return driver_int(t, k);
}

opdfn_variant variant_of(const controls& c) { return static_cast<opdfn_variant>(c.ntyp_galerkin); }

/// With a structure that re-starts share, the pattern must not depend on values.
bool keeps_zeros(const controls& c) {
  return parm::glk_mult_zeros || (parm::struct_ident && (c.iswit == 3 || c.iswit == 4));
}

void form_operator(setup_state& t, level& fine, level& coarse) {
  const timed time(phase::opdfn);
  prepare_opdfn(fine, coarse);
  opdfn(fine, coarse, variant_of(t.c), keeps_zeros(t.c));
}

/// Returns the number of levels.
int level_loop(setup_state& t) {
  const int wanted = std::min({std::abs(t.c.levelx), parm::max_level, max_levels});
  int k = 1;
  for (; k < wanted; ++k) {
    t.warn_slow = t.reports();
    const bool aggressive = t.s.nred > 0 && k <= t.s.nred_levels;
    announce(t, k + 1, aggressive);
    if (coarsen(t, k, aggressive) == coarsening::stops) {
      release_interpolation(t.h(k));
      break;
    }
    form_operator(t, t.h(k), t.h(k + 1));
  }
  if (wanted > 1) apply_emergency_rule(t.c, t.h(k).n);
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

const setup_record& latest_setup() { return latest; }

void create_levels(hierarchy& h, controls& c) {
  latest = setup_record();
  setup_state t{h, c, decode_setup(c), latest};
  h.levels_created = h.levels_used = -1;
  try {
    const int levels = level_loop(t);
    allocate_vectors(h, levels);
    h.levels_created = h.levels_used = levels;
    trace(1, " crsng - std_return");
  } catch (const failure& error) {
    trace(1, " crsng - error_exit, nflag " + std::to_string(error.ierr));
    release_interpolation(h(1));
    for (int k = 2; k <= max_levels; ++k) release_level(h(k));
    throw;
  }
}

void recompute_operators(hierarchy& h, const controls& c) {
  const timed time(phase::opdfn);
  for (int k = 1; k < h.levels_created; ++k) opdfn(h(k), h(k + 1), variant_of(c), keeps_zeros(c));
}

}  // namespace tier
