// One-level methods.
#include "tier/solve/one_level.h"

#include <string>

#include "tier/solve/level_factors.h"
#include "tier/solve/sweep_code.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

constexpr int all_rows = 2;
ilu_options preconditioner_options(const solve_options& o) {
  const bool symmetric = needs_symmetry(o.acceleration.method);
  return ilu_options_of(o.smoothing, symmetric ? smoother_kind::ilu0 : smoother_kind::ilut);
}

[[noreturn]] void decomposition_failed(const acceleration_options& o) {
  if (needs_symmetry(o.method)) {
    const char* cg = o.ratio == cg_ratio::fletcher_reeves ? "old_cgc" : "new_cgc";
    const char* routine = o.method == accelerator::flexible_cg ? "flexcg_skcycle" : cg;
    fail(ierr_accelerator_ilu0, std::string("ILU(0) decomposition failed on level 1 (") + routine + ")!");
  }
  fail(ierr_accelerator_ilut, o.method == accelerator::bicgstab
                                  ? "ILUT decomposition failed in (cgstab)"
                                  : "ILUT decomposition failed on level 1 (gmres)");
}

}  // namespace

void prepare_one_level(cycle_state& s) {
  if (s.o.cycle.kind == cycle_kind::diagonal || s.o.acceleration.method == accelerator::none) return;
  if (!ilu_of_level(s.at(1), 1, preconditioner_options(s.o))) decomposition_failed(s.o.acceleration);
}

void one_level_precondition(cycle_state& s, view<const double> v, view<double> z) {
  const level& l = s.at(1);
  if (s.o.cycle.kind != cycle_kind::diagonal) {
    ilu_of_level(l, 1, preconditioner_options(s.o))->solve(v, z);
    return;
  }
  for_chunks(l.n, vector_team(l.n), [&](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) z[i] = v[i] / l.a[l.ia[i]];
  });
}

void one_level_sweeps(cycle_state& s, int sweeps) {
  level& l = s.at(1);
  const sweep_rows rows(l, nullptr, nullptr, s.scratch);
  const int step[] = {s.o.cycle.kind == cycle_kind::diagonal ? jacobi_step : all_rows};
  sweep_options o = s.o.smoothing.sweeps;
  o.routine = "relx_gs";
  for (int i = 0; i < sweeps; ++i) relx_gs(l, rows, l.f, l.u, step, o, s.scratch);
}

}  // namespace tier
