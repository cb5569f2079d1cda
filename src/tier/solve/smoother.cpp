// Choice of the smoother and its passes.
#include "tier/solve/smoother.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tier/solve/cycle_state.h"
#include "tier/solve/level_factors.h"
#include "tier/solve/matrix_ops.h"
#include "tier/solve/relx_pgs.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

void gauss_seidel_passes(cycle_state& s, int k, const sweep_code& code) {
  level& l = s.at(k);
  const std::span steps(code.step.data(), static_cast<std::size_t>(code.steps));
  for (int pass = 0; pass < code.passes; ++pass)
    relx_gs(l, s.rows_of(k), l.f, l.u, steps, s.o.smoothing.sweeps, s.scratch);
}

void block_passes(cycle_state& s, int k, const sweep_code& code) {
  level& l = s.at(k);
  const bool split = k < s.levels() && l.has_states();
  for (int pass = 0; pass < code.passes; ++pass)
    for (int m = 0; m < code.steps; ++m)
      relx_pgs(l, points_of_level(l, k), split ? l.icg.data() : nullptr, code.step[m],
               s.o.smoothing.full_pivoting);
}

ilu_factors& smoother_factors(cycle_state& s, int k, smoother_kind type) {
  ilu_factors* factors = ilu_of_level(s.at(k), k, ilu_options_of(s.o.smoothing, type));
  if (!factors && type == smoother_kind::ilu0)
    fail(ierr_smoother_ilu0, "(M)ILU(0) decomposition failed: smoothing (ilux_prepare)!");
  if (!factors) fail(ierr_smoother_ilut, "ILUT decomposition failed: smoothing (ilux_prepare)!");
  return *factors;
}

block_ilu& smoother_blocks(cycle_state& s, int k) {
  block_ilu* factors = block_ilu_of_level(s.at(k), k, s.o.smoothing.modified, s.o.smoothing.weight);
  if (!factors) fail(ierr_solution_internal, "Error in BLOCK ILU smoother in (smoother)");
  return *factors;
}

/// One sweep: r = f - A u, L U e = r, u = u + e.
template <class Factors>
void correction_sweeps(cycle_state& s, level& l, int sweeps, Factors& factors) {
  for (int pass = 0; pass < sweeps; ++pass) {
    residual(l, l.f, l.u, s.r);
    factors.solve(s.r, s.r);
    add_scaled(l.n, 1.0, s.r, l.u);
  }
}

void relx_ilu(cycle_state& s, int k, smoother_kind type, int sweeps) {
  correction_sweeps(s, s.at(k), sweeps, smoother_factors(s, k, type));
}

void relx_block_ilu0(cycle_state& s, int k, int sweeps) {
  correction_sweeps(s, s.at(k), sweeps, smoother_blocks(s, k));
}

/// Whether one of the steps is for the rows of one state.
bool asks_for_states(const sweep_code& code) {
  const auto of_one_state = [](int step) { return std::abs(step) != jacobi_step && std::abs(step) % 3 != 2; };
  return !code.empty() && std::any_of(code.step.begin(), code.step.begin() + code.steps, of_one_state);
}

/// Stores the rows of all levels that Gauss-Seidel smooths by their states.
void sort_rows(cycle_state& s, int last) {
  if (!asks_for_states(s.o.smoothing.pre) && !asks_for_states(s.o.smoothing.post)) return;
  const auto sorted = [&s](int k) {
    return smoother_type(s.o.smoothing, k) == smoother_kind::gauss_seidel && k < s.levels() &&
           s.at(k).has_states();
  };
  std::int64_t most = 0;
  for (int k = 1; k <= last; ++k)
    if (sorted(k)) most = std::max(most, entries_of_coarse_rows(s.at(k)));
  s.row_store.allocate(most, "row_store", "prepare_smoothers");
  for (int k = 1; k <= last; ++k)
    if (sorted(k)) s.by_state[k].emplace(s.at(k), s.row_store);
}

void share_rows(cycle_state& s, int k) {
  const auto& by_state = s.by_state[k];
  s.rows[k] =
      sweep_rows(s.at(k), by_state ? &*by_state : nullptr, k > 1 ? &s.rows_of(k - 1) : nullptr, s.scratch);
}

}  // namespace

void prepare_smoothers(cycle_state& s) {
  if (s.levels() > 1 && smoother_type(s.o.smoothing, 2) != s.o.smoothing.type) {
    const smoother_kind coarse = smoother_type(s.o.smoothing, 2);
    if (coarse != smoother_kind::gauss_seidel && coarse != smoother_kind::block_gauss_seidel)
      fail(ierr_illegal_value, "Illegal value of parameter <nxtyp_coarse> in (smoother)");
    if (s.o.smoothing.tells_of_coarse_levels)
      info(message_class::note, "special variant: V/U/BGS enforced on coarse levels!");
  }
  const int last = std::max(1, s.levels() - (s.o.coarsest.method == coarsest_solver::smoothing ? 0 : 1));
  sort_rows(s, last);
  for (int k = 1; k <= last; ++k) {
    const smoother_kind type = smoother_type(s.o.smoothing, k);
    if (type == smoother_kind::gauss_seidel) share_rows(s, k);
    if (type >= smoother_kind::ilu0 && type <= smoother_kind::ilutp) smoother_factors(s, k, type);
    if (type == smoother_kind::block_gauss_seidel || type == smoother_kind::block_ilu0) {
      if (!s.at(k).ip)
        fail(ierr_inconsistent_input, "Block smoothing needs the points of the variables: <ip> is not given");
      points_of_level(s.at(k), k);
    }
    if (type == smoother_kind::block_ilu0) smoother_blocks(s, k);
  }
}

smoother_kind smoother_type(const smoothing_options& o, int k) {
  const bool replaceable =
      o.type == smoother_kind::gauss_seidel || o.type == smoother_kind::block_gauss_seidel;
  return k > 1 && replaceable ? o.on_coarse_levels.value_or(o.type) : o.type;
}

ilu_options ilu_options_of(const smoothing_options& o, smoother_kind type) {
  ilu_options made;
  made.weight = o.weight;
  made.modified = o.modified && type != smoother_kind::ilut;
  made.speed = o.speed;
  if (type == smoother_kind::ilu0) return made;
  made.kind = type == smoother_kind::ilut ? ilu_kind::threshold : ilu_kind::threshold_pivoting;
  made.lfil = std::max(0, o.fill);
  made.droptol = o.drop;
  return made;
}

void smoother(cycle_state& s, int k, const sweep_code& code) {
  if (code.passes == 0) {
    trace(trace_topic::smoothing, " NO SMOOTHING !?");
    return;
  }
  const timed clock(phase::relaxation);
  switch (const smoother_kind type = smoother_type(s.o.smoothing, k); type) {
    case smoother_kind::gauss_seidel:
      return gauss_seidel_passes(s, k, code);
    case smoother_kind::ilu0:
    case smoother_kind::ilut:
    case smoother_kind::ilutp:
      return relx_ilu(s, k, type, code.passes);
    case smoother_kind::block_gauss_seidel:
      return block_passes(s, k, code);
    case smoother_kind::block_ilu0:
      return relx_block_ilu0(s, k, code.passes);
  }
  const std::string number = std::to_string(code_of(smoother_type(s.o.smoothing, k)));
  fail(ierr_illegal_value, "Illegal value of parameter <" + number + "> in (smoother)");
}

}  // namespace tier
