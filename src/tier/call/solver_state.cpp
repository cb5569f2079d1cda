// The kept hierarchy: test of its fitness for a re-start, and clean-up.
#include "tier/call/solver_state.h"

#include <string>

#include "tier/codes/approach_code.h"
#include "tier/solve/tier_solve.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"
#include "tier/store/results_of_run.h"

namespace tier {

const per_context<solver_state> solver;

namespace {

template <class T>
void require_same(T now, T before, int ierr, const char* name) {
  if (now != before) fail(ierr, std::string("TIER re-start terminated - illegal change in <") + name + ">");
}

/// Frees what a set-up made of a level. The big arrays may stay for the next set-up to take over.
void release_level(level& l, bool keep_big_arrays) {
  level kept;
  if (keep_big_arrays) {
    kept.jw.swap(l.jw);
    kept.w.swap(l.w);
    kept.own_ja.swap(l.own_ja);
    kept.own_a.swap(l.own_a);
    kept.own_u.swap(l.own_u);
    kept.own_f.swap(l.own_f);
  }
  l = std::move(kept);
}

void free_hierarchy(const char* marker, const char* kind, bool keep_big_arrays) {
  say_if_possible([=] { trace(trace_topic::call, std::string(marker) + kind); });
  solver().last_set_up = problem_descriptors();
  solver().hierarchy_present = false;
  release_solution_data();
  release_level_one(solver().levels(1), solver().scaling);
  for (level& l : solver().levels.at) release_level(l, keep_big_arrays);
  solver().aggregates = {};
  solver().levels.levels_created = solver().levels.levels_used = -1;
}

}  // namespace

problem_descriptors descriptors_of(const call_arguments& call, const controls& c) {
  return {
      c.nnu, c.nna, c.nsys, c.npnts, c.levelx, c.nptmn, approach_or_default(call.nsolve), parm().naggregation,
      c.igam};
}

void check_re_start(const call_arguments& call, const controls& c) {
  if (!solver().set_up_since_start)
    fail(ierr_no_first_setup, "TIER re-start requires an initial call with iswit=4!");
  if (!solver().hierarchy_present)
    fail(ierr_no_hierarchy, "TIER re-start terminated - no AMG decomposition available in (tier_main)!");
  const problem_descriptors now = descriptors_of(call, c), &before = solver().last_set_up;
  require_same(now.nna, before.nna, ierr_changed_size, "nna");
  require_same(now.nnu, before.nnu, ierr_changed_size, "nnu");
  require_same(now.nsys, before.nsys, ierr_changed_descriptor, "nsys");
  require_same(now.npnts, before.npnts, ierr_changed_descriptor, "npnts");
  require_same(now.levelx, before.levelx, ierr_changed_descriptor, "levelx");
  require_same(now.nptmn, before.nptmn, ierr_changed_descriptor, "nptmn");
  require_same(now.nsolve, before.nsolve, ierr_changed_descriptor, "nsolve");
  require_same(now.igam, before.igam, ierr_changed_descriptor, "igam");
  require_same(now.naggregation, before.naggregation, ierr_changed_descriptor, "naggregation");
  if (c.iswit == run_kind::new_operators && parm().struct_ident != solver().struct_ident_at_set_up)
    fail(ierr_setup_internal, "tier_main:: illegal change of struct_ident after last setup with iswtch=4xxx");
}

void clean_up(const char* marker) { free_hierarchy(marker, "__(FULL_CLEANUP)", false); }

void partial_clean_up(const char* marker) {
  free_hierarchy(marker, "__(PARTIAL_CLEANUP)_", parm().keepmem);
  if (parm().keepmem && parm().info_keepmem) message(formatted("Kept memory [MB]: %f", megabytes_in_use()));
}

}  // namespace tier
