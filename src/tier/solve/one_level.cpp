// One-level methods.
#include "tier/solve/one_level.h"

#include "tier/frame/ierr.h"
#include "tier/frame/info.h"
#include "tier/solve/row_loop.h"

namespace tier {

namespace {

constexpr int by_diagonal = 5;
constexpr int all_rows = 2, jacobi_step = 7;

}  // namespace

void prepare_one_level(cycle_state&) {}

void one_level_precondition(cycle_state& s, view<const double> v, view<double> z) {
  const level& l = s.at(1);
  for_chunks(l.n, vector_team(l.n), [&](const row_chunk& c) {
    for (int i = c.lo; i <= c.hi; ++i) z[i] = v[i] / l.a[l.ia[i]];
  });
}

void one_level_sweeps(cycle_state& s, int sweeps) {
  level& l = s.at(1);
  const int step = s.c.igam == by_diagonal ? jacobi_step : all_rows;
  for (int i = 0; i < sweeps; ++i) relx_gs(l, nullptr, l.f, l.u, step, s.damping, s.scratch, "relx_gs");
}

}  // namespace tier
