// Smoothing codes and steps against numbers from paper; parallel steps against a loop that freezes what
// other threads smooth.
#include "tier/solve/relax.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "support/tier/known_hierarchy.h"
#include "support/tier/systems.h"
#include "tier/solve/rows_by_state.h"
#include "tier/solve/sweep_code.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;

struct code_case {
  int code, passes;
  std::vector<int> steps;
};

TEST(SweepCode, SplitsIntoPassesAndSteps) {
  for (const code_case& expected : std::vector<code_case>{{131, 1, {3, 1}},
                                                          {-131, 1, {-1, -3}},
                                                          {431, 4, {3, 1}},
                                                          {12, 1, {2}},
                                                          {0, 0, {}},
                                                          {3, 3, {}},
                                                          {-2147, 2, {-7, -4, -1}},
                                                          {1123456712, 1, {1, 2, 3, 4, 5, 6, 7, 1, 2}}}) {
    const tier::sweep_code code = tier::decode_sweeps(expected.code);
    EXPECT_EQ(code.passes, expected.passes) << expected.code;
    EXPECT_EQ(std::vector<int>(code.step.begin(), code.step.begin() + code.steps), expected.steps)
        << expected.code;
  }
}

struct step_case {
  const char* name;
  int step;
  double sor_factor;
  bool split;
  std::vector<double> expected;
};

void set_states(tier::level& l, const std::vector<int>& icg) {
  l.icg.allocate(l.n, "icg", "test");
  std::copy(icg.begin(), icg.end(), l.icg.data());
}

/// How the rows were shared out.
struct sweep_sharing {
  int team, rounds;
  bool damped;  // some diagonals were larger
};

/// Steps on a level, with its rows by state if it has states.
sweep_sharing run_steps(tier::level& l, const std::vector<int>& steps, const tier::sweep_options& o = {}) {
  std::vector<double> copies(static_cast<std::size_t>(l.n * tier::max_threads()));
  const tier::vector scratch(copies.data());
  std::vector<double> store(static_cast<std::size_t>(l.has_states() ? tier::entries_of_coarse_rows(l) : 0));
  std::optional<tier::rows_by_state> sorted;
  if (l.has_states()) sorted.emplace(l, tier::vector(store.data()));
  const tier::sweep_rows rows(l, sorted ? &*sorted : nullptr, nullptr, scratch);
  tier::relx_gs(l, rows, l.f, l.u, steps, o, scratch);
  const double* const added = rows.added().data();
  return {rows.team(), rows.rounds(),
          added && std::any_of(added, added + l.n, [](double x) { return x != 0.0; })};
}

class RelxGs : public testing::TestWithParam<step_case> {};

// tridiag(-1, 2, -1), rows C F C, f = 2, u = 0
TEST_P(RelxGs, GivesNumbersFromPaper) {
  use_threads(1);
  sparse_system s = line(3);
  s.f = {2.0, 2.0, 2.0};
  tier::hierarchy h;
  set_first_level(h, s);
  if (GetParam().split) set_states(h(1), {1, -1, 2});

  run_steps(h(1), {GetParam().step}, {GetParam().sor_factor, {}});

  for (std::size_t i = 0; i < 3; ++i) EXPECT_DOUBLE_EQ(s.u[i], GetParam().expected[i]) << i;
}

const std::vector<double> up{1.0, 1.5, 1.75}, down{1.75, 1.5, 1.0};
INSTANTIATE_TEST_SUITE_P(
    Steps, RelxGs,
    testing::Values(
        step_case{"FRows", 1, 0.0, true, {0.0, 1.0, 0.0}}, step_case{"All", 2, 0.0, true, up},
        step_case{"CRows", 3, 0.0, true, {1.0, 0.0, 1.0}}, step_case{"AllDown", 5, 0.0, true, down},
        step_case{"FDown", 4, 0.0, true, {0.0, 1.0, 0.0}}, step_case{"CDown", 6, 0.0, true, {1.0, 0.0, 1.0}},
        step_case{"MinusTwoIsDown", -2, 0.0, true, down}, step_case{"MinusFiveIsUp", -5, 0.0, true, up},
        step_case{"NoSplitF", 1, 0.0, false, up}, step_case{"NoSplitCDown", 6, 0.0, false, down},
        step_case{"NoSplitMinusF", -1, 0.0, false, down},
        step_case{"SorUp", 2, 0.5, true, {0.5, 0.625, 0.65625}}, step_case{"SorNotDown", 5, 0.5, true, down},
        step_case{"SorNotReversed", -2, 0.5, true, down}, step_case{"Jacobi", 7, 0.0, true, {0.5, 0.5, 0.5}}),
    [](const auto& tested) { return tested.param.name; });

TEST(RelxGs, SorKeepsItsShareOfTheOldValue) {
  use_threads(1);
  sparse_system s;
  s.add_row(2.0, {});
  s.f = {2.0};
  s.u = {4.0};
  tier::hierarchy h;
  set_first_level(h, s);

  run_steps(h(1), {2}, {0.25, {}});

  EXPECT_DOUBLE_EQ(s.u[0], 0.25 * 1.0 + 0.75 * 4.0);
}

TEST(RelxGs, RefusesAnUnknownStep) {
  sparse_system s = line(3);
  tier::hierarchy h;
  set_first_level(h, s);
  for (int step : {0, 8, -9}) {
    try {
      run_steps(h(1), {2, step});
      FAIL() << step;
    } catch (const tier::failure& f) {
      EXPECT_EQ(f.ierr, tier::ierr_illegal_value);
    }
  }
}

TEST(RelxGs, JacobiTakesAFactorPerFunction) {
  sparse_system s = coupled(line(1), 2, 0.0);
  s.f = {2.0, 2.0};
  tier::hierarchy h;
  set_first_level(h, s);
  double factors[] = {0.25, 1.0};

  run_steps(h(1), {7}, {0.0, {0.5, tier::const_vector(factors)}});

  EXPECT_EQ(s.u, (std::vector<double>{0.25, 1.0}));
}

// A thread reads rows of others as they were when the round began, so parallel steps have one right result.
struct parallel_case {
  const char* name;
  sparse_system system;
  bool more_rounds;
  std::vector<int> steps;
};
class ParallelSteps : public testing::TestWithParam<parallel_case> {};

/// Old values are those of rows in the same round but in another thread's block. Where they have more than
/// half the diagonal's weight the correction of the row is divided by both together.
double relaxed(const sparse_system& s, std::size_t row, int block, const std::vector<int>& block_of,
               const std::vector<double>& now, const std::vector<double>& old, int team) {
  const std::size_t first = position(s.ia[row]);
  double r = s.f[row] - s.a[first] * now[row], weight = 0.0;
  for (std::size_t p = first + 1; p < position(s.ia[row + 1]); ++p) {
    const std::size_t j = position(s.ja[p]);
    const bool at_once = block_of[j] / team == block / team && block_of[j] != block;
    r -= s.a[p] * (at_once ? old : now)[j];
    weight += at_once ? std::abs(s.a[p]) : 0.0;
  }
  return now[row] + r / (s.a[first] + (weight > 0.5 * s.a[first] ? weight : 0.0));
}

void expected_step(const sparse_system& s, const std::vector<int>& icg, int team, int rounds, int step,
                   std::vector<double>& u) {
  const int mode = std::abs(step), filter = mode == 7 ? 2 : (mode - 1) % 3 + 1, blocks = rounds * team;
  const bool descending = (mode > 3) != (step < 0);
  std::vector<int> block_of(u.size());
  for (int b = 0; b < blocks; ++b)
    std::fill(block_of.begin() + s.n * b / blocks, block_of.begin() + s.n * (b + 1) / blocks, b);
  std::vector<double> old = u;
  for (int k = 0, round = -1; k < s.n; ++k) {
    const auto row = static_cast<std::size_t>(descending ? s.n - 1 - k : k);
    const int block = block_of[row];
    if (mode != 7 && block / team != round) old = u;
    round = block / team;
    if ((filter == 1 && icg[row] > 0) || (filter == 3 && icg[row] <= 0)) continue;
    if (mode == 7)
      u[row] = old[row] - 0.5 * (old[row] - relaxed(s, row, 0, std::vector<int>(u.size(), 0), old, old, 1));
    else
      u[row] = relaxed(s, row, block, block_of, u, old, team);
  }
}

TEST_P(ParallelSteps, FreezeRowsThatOthersSmooth) {
  constexpr int team = 3;
  sparse_system s = GetParam().system;
  for (std::size_t i = 0; i < s.u.size(); ++i) s.u[i] = 0.001 * static_cast<double>(i % 17);
  tier::hierarchy h;
  set_first_level(h, s);
  std::vector<int> icg(s.u.size());
  for (std::size_t i = 0; i < icg.size(); ++i) icg[i] = i % 3 == 0 ? 1 : -1;
  use_threads(team);
  set_states(h(1), icg);
  const sparse_system before = s;

  const sweep_sharing shared = run_steps(h(1), GetParam().steps);

  ASSERT_EQ(shared.team, team);
  EXPECT_EQ(shared.rounds > 2, GetParam().more_rounds) << shared.rounds;
  EXPECT_TRUE(shared.damped);
  std::vector<double> expected = before.u;
  for (const int step : GetParam().steps) expected_step(before, icg, team, shared.rounds, step, expected);
  for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_NEAR(s.u[i], expected[i], 1e-13) << i;
  EXPECT_EQ(s.ja, before.ja);  // the caller's matrix stands as it stood
  EXPECT_EQ(s.a, before.a);
}

std::vector<parallel_case> parallel_cases() {
  const sparse_system grid = turned_anisotropy(40, 30.0, 0.1), random = random_rows(1500, 30, 4.0, 5);
  return {{"CF", grid, false, {3, 1}},
          {"F", grid, false, {1}},
          {"All", grid, false, {2}},
          {"MinusFC", grid, false, {-1, -3}},
          {"Turning", grid, false, {5, 6, 2}},
          {"Jacobi", grid, false, {1, 7, 3}},
          {"RandomAll", random, true, {2, 2}},
          {"RandomCF", random, true, {3, 1}},
          {"RandomTurning", random, true, {2, -2, 5, -5}}};
}
INSTANTIATE_TEST_SUITE_P(Codes, ParallelSteps, testing::ValuesIn(parallel_cases()),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
