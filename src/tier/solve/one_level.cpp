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
ilu_options preconditioner_options(accelerator method) {
  return smoother_ilu_options(needs_symmetry(method) ? smoother_kind::ilu0 : smoother_kind::ilut);
}

[[noreturn]] void decomposition_failed(const controls& c) {
  if (needs_symmetry(c.ncgrad)) {
    const char* cg = c.ntyp_cg == cg_ratio::fletcher_reeves ? "old_cgc" : "new_cgc";
    const char* routine = c.ncgrad == accelerator::flexible_cg ? "flexcg_skcycle" : cg;
    fail(ierr_accelerator_ilu0, std::string("ILU(0) decomposition failed on level 1 (") + routine + ")!");
  }
  fail(ierr_accelerator_ilut, c.ncgrad == accelerator::bicgstab
                                  ? "ILUT decomposition failed in (cgstab)"
                                  : "ILUT decomposition failed on level 1 (gmres)");
}

}  // namespace

void prepare_one_level(cycle_state& s) {
  if (s.c.igam == cycle_kind::diagonal || s.c.ncgrad == accelerator::none) return;
  if (!ilu_of_level(s.at(1), 1, preconditioner_options(s.c.ncgrad))) decomposition_failed(s.c);
}

void one_level_precondition(cycle_state& s, view<const double> v, view<double> z) {
  const level& l = s.at(1);
  if (s.c.igam != cycle_kind::diagonal) {
    ilu_of_level(l, 1, preconditioner_options(s.c.ncgrad))->solve(v, z);
    return;
  }
  for_chunks(l.n, vector_team(l.n), [&](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) z[i] = v[i] / l.a[l.ia[i]];
  });
}

void one_level_sweeps(cycle_state& s, int sweeps) {
  level& l = s.at(1);
  const sweep_rows rows(l, nullptr, nullptr, s.scratch);
  const int step[] = {s.c.igam == cycle_kind::diagonal ? jacobi_step : all_rows};
  for (int i = 0; i < sweeps; ++i) relx_gs(l, rows, l.f, l.u, step, s.damping, s.scratch, "relx_gs");
}

}  // namespace tier
