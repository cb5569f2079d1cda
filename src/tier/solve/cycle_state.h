// What the cycles of one solution share: hierarchy, controls, options and scratch vectors.
// Made by tier_solve once per call; passed to every routine of the solution phase.
#pragma once

#include <optional>

#include "tier/solve/rows_by_state.h"
#include "tier/solve/solve_options.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"
#include "tier/store/numbered.h"

namespace tier {

struct cycle_state {
  cycle_state(hierarchy& levels_of_run, const controls& controls_of_run, const solve_options& options_of_run);

  hierarchy& h;
  const controls& c;
  const solve_options& o;
  work_array<double> r;                         // of level 1's length
  work_array<double> scratch;                   // threads times level 1's length
  work_array<double> copy1, copy2, e1, e2, ae;  // V*-cycle: u before the correction, directions; else empty
  numbered<int, max_levels + 1> visits{};       // [1..levels] in the current cycle

  // where Gauss-Seidel smooths
  work_array<double> row_store;
  numbered<std::optional<rows_by_state>, max_levels + 1> by_state;  // [1..levels-1]
  numbered<sweep_rows, max_levels + 1> rows;                        // [1..levels]

  int levels() const { return h.levels_used; }
  level& at(int k) { return h(k); }
  const sweep_rows& rows_of(int k) const { return rows[k]; }
};

/// Puts other vectors in the place of level k's u and f while it lives.
class level_system {
 public:
  level_system(level& l, view<double> u, view<double> f) : level_(l), u_(l.u), f_(l.f) {
    l.u = u;
    l.f = f;
  }
  ~level_system() {
    level_.u = u_;
    level_.f = f_;
  }
  level_system(const level_system&) = delete;
  level_system& operator=(const level_system&) = delete;

 private:
  level& level_;
  view<double> u_, f_;
};

}  // namespace tier
