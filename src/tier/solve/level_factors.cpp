// Keeper of the decompositions of all levels.
#include "tier/solve/level_factors.h"

#include <string>

#include "tier/store/info.h"
#include "tier/store/numbered.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

struct kept_factors {
  numbered<std::unique_ptr<ilu_factors>, 2> ilu;  // by ilu_user
  std::unique_ptr<block_ilu> blocks;
  std::unique_ptr<point_blocks> points;
};

using factors_by_level = numbered<kept_factors, max_levels + 1>;
const per_context<factors_by_level> kept;

kept_factors& kept_at(int k) { return kept()[k]; }

/// What cgc0 and cgstab0 tell about new factors.
void trace_decomposition(const ilu_factors* former, const ilu_options& wanted) {
  const auto tell = [](const std::string& what) { trace(trace_topic::coarsest_solver, what); };
  if (wanted.kind == ilu_kind::threshold)
    tell("cl precond. BI-CGSTAB : setting up ILUT(" + std::to_string(wanted.lfil) + ") decomposition");
  if (!former) return;
  const ilu_options& had = former->options();
  if (had.speed != wanted.speed) tell("cgc0 : ilu_dealloc (parm ilu_spped changed)");
  if (had.modified != wanted.modified) tell("cgc0 : ilu_dealloc (parm milu changed)");
  if (had.kind != wanted.kind && wanted.kind == ilu_kind::zero_fill)
    tell("cgc0 : ilu_dealloc (ilu type changed from ilut to ilu0)");
}

}  // namespace

ilu_factors* ilu_of_level(const level& l, int k, const ilu_options& options, ilu_user user) {
  auto& slots = kept_at(k).ilu;
  for (const auto& slot : slots)
    if (slot && slot->options() == options) return slot.get();
  std::unique_ptr<ilu_factors>& own = slots[static_cast<int>(user)];
  if (user == ilu_user::coarsest_solver) trace_decomposition(own.get(), options);
  own.reset();
  const timed clock(phase::ilu_decomposition);
  auto made = std::make_unique<ilu_factors>();
  if (!made->decompose(l, options)) return nullptr;
  own = std::move(made);
  return own.get();
}

point_blocks& points_of_level(const level& l, int k) {
  kept_factors& f = kept_at(k);
  if (!f.points) f.points = std::make_unique<point_blocks>(l);
  return *f.points;
}

block_ilu* block_ilu_of_level(const level& l, int k, bool modified, double weight) {
  kept_factors& f = kept_at(k);
  if (f.blocks && f.blocks->made_with(modified, weight)) return f.blocks.get();
  const timed clock(phase::ilu_decomposition);
  auto made = std::make_unique<block_ilu>();
  if (!made->decompose(l, points_of_level(l, k), modified, weight)) return nullptr;
  f.blocks = std::move(made);
  return f.blocks.get();
}

void release_level_factors() {
  for (kept_factors& f : kept()) f = {};
}

}  // namespace tier
