// Choice of the smoother and its passes.
#include "tier/solve/smoother.h"

#include <algorithm>
#include <cstdlib>
#include <string>

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
  const char* routine = s.c.nstyp == approach::by_variables ? "relx_gs" : "relx_ugs";
  const std::span steps(code.step.data(), static_cast<std::size_t>(code.steps));
  for (int pass = 0; pass < code.passes; ++pass)
    relx_gs(l, s.rows_of(k), l.f, l.u, steps, s.damping, s.scratch, routine);
}

void block_passes(cycle_state& s, int k, const sweep_code& code) {
  level& l = s.at(k);
  const bool split = k < s.levels() && l.has_states();
  for (int pass = 0; pass < code.passes; ++pass)
    for (int m = 0; m < code.steps; ++m)
      relx_pgs(l, points_of_level(l, k), split ? l.icg.data() : nullptr,
               code.step[static_cast<std::size_t>(m)]);
}

ilu_factors& smoother_factors(cycle_state& s, int k, smoother_kind type) {
  ilu_factors* factors = ilu_of_level(s.at(k), k, smoother_ilu_options(type));
  if (!factors && type == smoother_kind::ilu0)
    fail(ierr_smoother_ilu0, "(M)ILU(0) decomposition failed: smoothing (ilux_prepare)!");
  if (!factors) fail(ierr_smoother_ilut, "ILUT decomposition failed: smoothing (ilux_prepare)!");
  return *factors;
}

block_ilu& smoother_blocks(cycle_state& s, int k) {
  block_ilu* factors = block_ilu_of_level(s.at(k), k, parm().milu != 0, parm().delta_milu);
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
  if (!asks_for_states(s.pre) && !asks_for_states(s.post)) return;
  const auto sorted = [&s](int k) {
    return smoother_type(s.c, k) == smoother_kind::gauss_seidel && k < s.levels() && s.at(k).has_states();
  };
  std::int64_t most = 0;
  for (int k = 1; k <= last; ++k)
    if (sorted(k)) most = std::max(most, entries_of_coarse_rows(s.at(k)));
  s.row_store.allocate(most, "row_store", "prepare_smoothers");
  for (int k = 1; k <= last; ++k)
    if (sorted(k)) s.by_state[static_cast<std::size_t>(k)].emplace(s.at(k), s.row_store);
}

void share_rows(cycle_state& s, int k) {
  const auto& by_state = s.by_state[static_cast<std::size_t>(k)];
  s.rows[static_cast<std::size_t>(k)] =
      sweep_rows(s.at(k), by_state ? &*by_state : nullptr, k > 1 ? &s.rows_of(k - 1) : nullptr, s.scratch);
}

}  // namespace

void prepare_smoothers(cycle_state& s) {
  if (s.levels() > 1 && smoother_type(s.c, 2) != s.c.nxtyp) {
    const smoother_kind coarse{parm().nxtyp_coarse};
    if (coarse != smoother_kind::gauss_seidel && coarse != smoother_kind::block_gauss_seidel)
      fail(ierr_illegal_value, "Illegal value of parameter <nxtyp_coarse> in (smoother)");
    if (parm().print_nxtyp_coarse_msg)
      info(message_class::note, "special variant: V/U/BGS enforced on coarse levels!");
  }
  const int last = std::max(1, s.levels() - (s.c.nrc == coarsest_solver::smoothing ? 0 : 1));
  sort_rows(s, last);
  for (int k = 1; k <= last; ++k) {
    const smoother_kind type = smoother_type(s.c, k);
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

smoother_kind smoother_type(const controls& c, int k) {
  const bool replaceable =
      c.nxtyp == smoother_kind::gauss_seidel || c.nxtyp == smoother_kind::block_gauss_seidel;
  if (k == 1 || !replaceable || parm().nxtyp_coarse < 0) return c.nxtyp;
  const smoother_kind coarse{parm().nxtyp_coarse};
  return c.nsys == 1 && coarse == smoother_kind::block_gauss_seidel ? smoother_kind::gauss_seidel : coarse;
}

void smoother(cycle_state& s, int k, const sweep_code& code) {
  if (code.passes == 0) {
    trace(1, " NO SMOOTHING !?", parm().itrace_smo);
    return;
  }
  const timed clock(phase::relaxation);
  switch (const smoother_kind type = smoother_type(s.c, k); type) {
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
  const std::string number = std::to_string(code_of(smoother_type(s.c, k)));
  fail(ierr_illegal_value, "Illegal value of parameter <" + number + "> in (smoother)");
}

}  // namespace tier
