// The cycle: a loop over the levels, no recursion.
#include "tier/solve/cyc.h"

#include <cmath>
#include <string>

#include "tier/solve/cgsolve.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/minimize.h"
#include "tier/solve/norms.h"
#include "tier/solve/smoother.h"
#include "tier/solve/transfer.h"
#include "tier/store/formatted.h"
#include "tier/store/info.h"
#include "tier/store/report.h"

namespace tier {

namespace {

constexpr int process_lines = 3;  // level of iout that shows the processes within a cycle

double level_residual(cycle_state& s, int k) {
  const level& l = s.at(k);
  return resid(l, l.f, l.u, s.c.norm_typ);
}

void show_process(cycle_state& s, int k, std::string_view process) {
  if (s.c.out_level >= process_lines) print_process_line(s.c, k, level_residual(s, k), process);
}

void smooth(cycle_state& s, int k, const sweep_code& code, int runs) {
  for (int i = 0; i < runs; ++i) smoother(s, k, code);
}

void warn_of_reduction(coarsest_solver method, double ratio) {
  const auto tell = [](std::string_view text) { info(message_class::warning, text); };
  tell(formatted("Insufficient residual reduction on coarsest level: %.5e", ratio));
  tell("If this happens only after several AMG iterations, most probably");
  tell("you have reached the level of dominant round-off influence");
  tell("(or the coarsest-level system is singular but incompatible).");
  if (method == coarsest_solver::smoothing)
    tell("Otherwise, there may be convergence problems for relaxation.");
  if (method == coarsest_solver::ilu_cg || method == coarsest_solver::diagonal_cg)
    tell("Otherwise, there may be convergence problems for cg.");
  if (method == coarsest_solver::ilut_bicgstab || method == coarsest_solver::diagonal_bicgstab)
    tell("Otherwise, there may be convergence problems for BI-CGSTAB.");
}

void solve_coarsest(cycle_state& s) {
  const int k = s.levels();
  if (!s.c.residual_check) {
    cgsolve(s, k);
  } else {
    const double before = level_residual(s, k);
    cgsolve(s, k);
    if (before > 0.0) {
      const double ratio = level_residual(s, k) / (before + 1e-90);
      if (ratio > std::sqrt(s.o.coarsest.reduction)) warn_of_reduction(s.o.coarsest.method, ratio);
    }
  }
  show_process(s, k, "solv");
}

void one_level_cycle(cycle_state& s) {
  if (s.o.coarsest.on_finest) {
    info(message_class::warning, "warning : perform cgsolve as one level solver - replacing tier_smoother");
    cgsolve(s, 1);
    return;
  }
  smoother(s, 1, s.o.smoothing.pre);
  cgsolve(s, 1);
  smoother(s, 1, s.o.smoothing.post);
}

/// Whether the cycle goes down once more from level k.
bool down_again(cycle_state& s, int level_start, int k) {
  int& visits = s.visits[k];
  switch (s.o.cycle.kind) {
    case cycle_kind::v:
      return false;
    case cycle_kind::f:
      return visits < 2;
    case cycle_kind::w:
      if (visits < 2) return true;
      visits = 0;
      return false;
    case cycle_kind::vv:
      return k == level_start + 1 && visits == 1;
    case cycle_kind::diagonal:
    case cycle_kind::incomplete_factors:
      break;
  }
  emergency_stop("Illegal value of parameter <igam> in (cyc)");
}

}  // namespace

int dynamic_sweeps(int ndyn_smo, int level_start, int k) {
  switch (ndyn_smo) {
    case 10:
      return k > level_start ? 2 : 1;
    case 11:
      return k > level_start ? k - level_start + 1 : 1;
    case 20:
      return k > level_start + 1 ? 2 : 1;
    case 21:
      return k > level_start + 1 ? k - level_start : 1;
    default:
      return 1;
  }
}

void cyc(cycle_state& s, int level_start, std::string_view reason) {
  const int levels = s.levels();
  if (traces(trace_topic::solution)) trace(trace_topic::solution, "cyc: " + std::string(reason));
  if (level_start == levels && level_start > 1)
    emergency_stop("Cycling must include at least two levels (cyc)!");
  if (levels == 1) return one_level_cycle(s);

  s.visits.fill(0);
  int k = level_start;
  do {
    for (; k < levels; ++k) {
      ++s.visits[k];
      smooth(s, k, s.o.smoothing.pre, dynamic_sweeps(s.o.cycle.dynamic_sweeps, level_start, k));
      if (s.o.cycle.star != star_cycle::none) keep_before_correction(s, level_start, k);
      resc(s.at(k), s.at(k + 1), s.r);
      show_process(s, k, "resc");
    }
    solve_coarsest(s);
    do {
      --k;
      inta(s.at(k), s.at(k + 1));
      show_process(s, k, "inta");
      smooth(s, k, s.o.smoothing.post, dynamic_sweeps(s.o.cycle.dynamic_sweeps, level_start, k));
    } while (k > level_start && !down_again(s, level_start, k));
  } while (k > level_start);
  if (s.o.cycle.star != star_cycle::none) minimize(s, level_start);
}

}  // namespace tier
