// What the library keeps between calls: the hierarchy, what it was made for, and the count of calls.
// Owned by tier_main; the entries clean it up.
#pragma once

#include "tier/aggregation/block_level.h"
#include "tier/call/level_one.h"
#include "tier/codes/call_arguments.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// What a re-start must find unchanged; -1 after a clean-up.
struct problem_descriptors {
  int nnu = -1, nna = -1, nsys = -1, npnts = -1, levelx = -1, nptmn = -1, nsolve = -1, naggregation = -1;
  cycle_kind igam{-1};
  bool operator==(const problem_descriptors&) const = default;
};

struct solver_state {
  hierarchy levels;
  aggregation::aggregation_hierarchy aggregates;  // present: levels holds level 1 alone
  system_scaling scaling;                         // of the call in work
  problem_descriptors last_set_up;
  bool set_up_since_start = false;  // a set-up was made since the start or TIER_LEAVE
  bool hierarchy_present = false;   // kept for re-starts
  bool struct_ident_at_set_up = false;
  coarsest_solver nrc_asked{0}, nrc_used{0};  // before and after the set-up; 0: none was made
  int calls = 0;                              // since the start or TIER_LEAVE
  int calls_with_hierarchy = 0;               // automatic control: calls since its last set-up
};
extern const per_context<solver_state> solver;

problem_descriptors descriptors_of(const call_arguments& call, const controls& c);

/// Ends the call unless the kept hierarchy fits it: 51 no set-up yet, 52 no hierarchy, 54 other sizes, 53
/// another descriptor, 100 another struct_ident with iswit 3.
void check_re_start(const call_arguments& call, const controls& c);

/// Frees the hierarchy and what hangs on it, traced under `marker`; a partial clean-up leaves the big arrays
/// where keepmem is set.
void clean_up(const char* marker);
void partial_clean_up(const char* marker);

}  // namespace tier
