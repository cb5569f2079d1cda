// Splitting step of a level.
#include "tier/setup/driver_split.h"

#include "tier/setup/coarsening_stop.h"
#include "tier/setup/collect.h"
#include "tier/setup/reduce.h"
#include "tier/setup/second_pass.h"
#include "tier/setup/setup_state.h"
#include "tier/setup/strength.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/info.h"
#include "tier/store/timers.h"

namespace tier {

namespace {

constexpr int last_threaded_level = 3;  // beyond it the first pass runs serially
constexpr int in_any_team = 5;          // code of the option

/// Direct interpolation suffers where blocks of rows meet, by up to two thirds more steps, which costs more
/// than a split in threads saves.
bool pcol_in_threads(int k, const setup_options& o) {
  if (o.splitting.threads < 1 || k > last_threaded_level) return false;
  const bool direct = o.interpolation.kind == interpolation_kind::direct;
  return o.splitting.threads >= in_any_team || (max_threads() > 1 && !direct);
}

bool reduce_in_threads(int k, int threads) {
  constexpr int too = 2;
  if (k > last_threaded_level) return false;
  return threads >= in_any_team || (threads == too && max_threads() > 1);
}

void run_pcol(const setup_state& t, int k, const couplings& m, int nprim, view<int> state, split_counts& n) {
  const timed time(phase::split);
  pcol_options o = t.o.splitting.first_pass;
  o.nprim = nprim;
  o.threads = pcol_in_threads(k, t.o);
  n = pcol(m, o, state);
  if (t.reports()) print_split_counts(n, t.c.nstyp);
}

void run_reduce(const setup_state& t, int k, const couplings& m, view<int> state, split_counts& n) {
  const timed time(phase::reduce);
  reduce_options o;
  o.paths = t.o.splitting.paths;
  o.kind = t.c.nstyp;
  o.report = t.reports();
  o.threads = reduce_in_threads(k, t.o.splitting.threads);
  for (int step = 0; step < t.o.splitting.reduce_steps; ++step) reduce(m, o, state, n);
}

void run_second_pass(const setup_state& t, const couplings& m, int nprim, view<int> state, split_counts& n) {
  const timed time(phase::split);
  const int changed = second_pass(m, t.o.splitting.second_pass_limit, nprim, state, n);
  if (t.reports())
    message("cforce(" + std::to_string(code_of(t.c.nstyp)) +
            "):     # vars -> C: " + std::to_string(changed));
}

/// First pass, aggressive coarsening and second pass on a matrix or a primary matrix.
coarsening split(setup_state& t, int k, const couplings& m, int nprim, bool aggressive, view<int> state) {
  const level& lv = t.h(k);
  split_counts& n = t.record.at[k].split;
  run_pcol(t, k, m, nprim, state, n);
  if (aggressive) run_reduce(t, k, m, state, n);
  if (test_split(t, lv, n) == coarsening::stops) return coarsening::stops;
  if (t.o.splitting.second_pass_limit == 0.0) return coarsening::goes_on;
  run_second_pass(t, m, nprim, state, n);
  return test_fine_count(t, lv, n);
}

void recount(const level& lv, split_counts& n) {
  n.c = n.f = n.ff = n.xf = 0;
  for (int i = 1; i <= lv.n; ++i) {
    n.c += lv.icg[i] > 0;
    n.ff += lv.icg[i] == state_ff;
    n.f += lv.icg[i] < 0;
    n.xf += lv.icg[i] == state_undecided;
  }
  n.ratio = static_cast<double>(n.c) / lv.n;
}

/// In single precision, as the tests have always taken it; products with it are not.
float variables_per_point(const level& lv) { return static_cast<float>(lv.n) / static_cast<float>(lv.npnts); }

coarsening test_size_and_ratio(setup_state& t, int k, double c_variables, const char* label) {
  const level& lv = t.h(k);
  if (test_coarse_size(t, lv, c_variables) == coarsening::stops) return coarsening::stops;
  return test_ratio(t, k + 1, c_variables / lv.n, label);
}

coarsening split_points(setup_state& t, int k, bool aggressive) {
  level& lv = t.h(k);
  split_counts& n = t.record.at[k].split;
  lv.ibcg.allocate(lv.npnts, "ibcg", "driver_split");
  if (split(t, k, primary_couplings(lv), 0, aggressive, lv.ibcg) == coarsening::stops)
    return coarsening::stops;
  const double expected = static_cast<double>(n.c) * variables_per_point(lv);
  if (test_size_and_ratio(t, k, expected, "(split_1)") == coarsening::stops) return coarsening::stops;
  collect_i(lv, t.o.splitting.unusable_points_become_c);
  recount(lv, n);
  if (t.reports()) message("collect_i:     A-gratio= " + std::to_string(n.ratio));
  if (!t.split_matrix) return coarsening::goes_on;
  return test_ratio(t, k + 1, n.ratio, "(split_2)");
}

coarsening split_variables(setup_state& t, int k, bool aggressive) {
  level& lv = t.h(k);
  split_counts& n = t.record.at[k].split;
  const couplings m = couplings_of(lv, t.own_unknown());
  if (split(t, k, m, t.c.nprim, aggressive, lv.icg) == coarsening::stops) return coarsening::stops;
  double c_variables = n.c;
  if (t.by_points()) {
    if (t.c.nint_force == point_interpolation::same) c_variables *= variables_per_point(lv);
    collect(lv, t.c.nprim, t.o.splitting.unusable_points_become_c);
    recount(lv, n);
    if (t.c.nint_force != point_interpolation::same) c_variables = n.c;
  }
  return test_size_and_ratio(t, k, c_variables, "(split_3)");
}

}  // namespace

coarsening driver_split(setup_state& t, int k, bool aggressive) {
  level& lv = t.h(k);
  lv.icg.allocate(lv.n, "icg", "driver_split");
  return t.uses_primary_matrix() ? split_points(t, k, aggressive) : split_variables(t, k, aggressive);
}

}  // namespace tier
