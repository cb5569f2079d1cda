// Cycles over hand-made Galerkin levels of a chain: the order of visits,
// sweeps, two-grid exactness, minimisation.
#include "tier/solve/cyc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "support/tier/known_hierarchy.h"
#include "support/tier/systems.h"
#include "tier/codes/solve_data.h"
#include "tier/solve/cycle_state.h"
#include "tier/solve/transfer.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

void make_levels(test_run& run, int levels) {
  for (int k = 1; k < levels; ++k) run.coarsen_line();
}

/// Levels in the order in which a cycle leaves them: "1 2 3 2 1".
std::string visits_of_cycle(int levels, int igam) {
  test_run run(line(31));
  make_levels(run, levels);
  run.c.igam = tier::cycle_kind{igam};
  run.c.out_level = 3;
  const tier::solve_options options = tier::options_of_solution(run.c);
  tier::cycle_state state(run.h, run.c, options);
  testing::internal::CaptureStdout();
  tier::cyc(state, 1, "test");
  std::istringstream output(testing::internal::GetCapturedStdout());
  std::string visits, last;
  for (std::string text; std::getline(output, text);) {
    std::istringstream words(text);
    std::string grid, norm, residual, process;
    if (!(words >> grid >> norm >> residual >> process) || grid == last) continue;
    visits += (visits.empty() ? "" : " ") + grid;
    last = grid;
  }
  return visits;
}

struct cycle_case {
  int levels, igam;
  const char* visits;
};

class Cycles : public testing::TestWithParam<cycle_case> {};

TEST_P(Cycles, VisitLevelsInTheirOrder) {
  EXPECT_EQ(visits_of_cycle(GetParam().levels, GetParam().igam), GetParam().visits);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Cycles,
                         testing::Values(cycle_case{2, 1, "1 2 1"}, cycle_case{4, 1, "1 2 3 4 3 2 1"},
                                         cycle_case{3, 2, "1 2 3 2 3 2 1"},
                                         cycle_case{4, 2, "1 2 3 4 3 4 3 2 3 4 3 2 1"},
                                         cycle_case{2, 3, "1 2 1"}, cycle_case{3, 3, "1 2 3 2 3 2 1"},
                                         cycle_case{4, 3, "1 2 3 4 3 4 3 2 3 4 3 4 3 2 1"},
                                         cycle_case{4, 4, "1 2 3 4 3 2 3 4 3 2 1"}));

TEST(DynamicSweeps, FollowLevelAndCode) {
  const auto runs = [](int code) {
    std::vector<int> by_level;
    for (int k = 1; k <= 4; ++k) by_level.push_back(tier::dynamic_sweeps(code, 1, k));
    return by_level;
  };
  EXPECT_EQ(runs(0), (std::vector<int>{1, 1, 1, 1}));
  EXPECT_EQ(runs(10), (std::vector<int>{1, 2, 2, 2}));
  EXPECT_EQ(runs(11), (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(runs(20), (std::vector<int>{1, 1, 2, 2}));
  EXPECT_EQ(runs(21), (std::vector<int>{1, 1, 2, 3}));
}

// Linear interpolation with an exact coarse solution and F relaxation is a direct method on a chain.
TEST(Cycles, TwoLevelsSolveAChainExactly) {
  test_run run(line(31));
  set_known_solution(run.system);
  make_levels(run, 2);
  run.c.ncgrad = tier::accelerator::none;
  run.c.ncycle = 1;
  run.c.nrd = run.c.nru = 11;

  EXPECT_EQ(run.solve(), 0);
  EXPECT_LE(run.relative_residual(), 1e-14);
}

TEST(Cycles, AllKindsConvergeAloneAndAccelerated) {
  for (const int igam : {1, 2, 3, 4})
    for (const int ncgrad : {0, 1, 2, 3, 4})
      for (const int nstar_typ : {0, 1, 2, 3}) {
        test_run run(line(255));
        set_known_solution(run.system);
        make_levels(run, 5);
        run.c.igam = tier::cycle_kind{igam};
        run.c.ncgrad = tier::accelerator{ncgrad};
        run.c.ntyp_cg = tier::cg_ratio::polak_ribiere;
        run.c.nru = ncgrad == 1 ? -131 : 131;
        run.c.nstar_typ = tier::star_cycle{nstar_typ};
        run.c.ndyn_smo = nstar_typ == 3 ? 11 : 0;
        EXPECT_EQ(run.solve(), 0) << igam << ncgrad << nstar_typ;
        EXPECT_LE(run.relative_residual(), 1.001e-8) << igam << ncgrad << nstar_typ;
        EXPECT_LE(run.results.ncyc_done, 10) << igam << ncgrad << nstar_typ;
      }
}

// e = u - copy is scaled to the least energy of the error: no other factor gives less.
TEST(Minimize, TakesTheBestMultipleOfTheCorrection) {
  const auto energy_error = [](int nstar_typ) {
    test_run run(five_point(5));
    set_known_solution(run.system);
    const std::vector<std::vector<std::pair<int, double>>> to_one(25, {{1, 1.0}});
    sparse_system coarse;
    coarse.add_row(60.0, {});  // three times the Galerkin value of 20: the correction is far too small
    std::vector<int> states(25, -1);
    states[12] = 1;
    run.add_level(coarse, states, to_one);
    run.c.ncgrad = tier::accelerator::none;
    run.c.ncycle = 1;
    run.c.nrd = 131;
    run.c.nru = 0;
    run.c.nstar_typ = tier::star_cycle{nstar_typ};
    run.solve();
    const std::vector<double> r = residual_of(run.system, run.system.u);
    double e = 0.0;  // (error, A error) = (error, r)
    for (std::size_t i = 0; i < r.size(); ++i)
      e += (std::sin(static_cast<double>(i + 1)) - run.system.u[i]) * r[i];
    return e;
  };
  EXPECT_LT(energy_error(1), energy_error(0));
  EXPECT_DOUBLE_EQ(energy_error(1), energy_error(2));
}

// The restriction is the transposed interpolation applied to the residual, whatever the team.
TEST(Transfer, RestrictsAndInterpolates) {
  for (const int threads : {1, 3}) {
    test_run run(line(2001));
    use_threads(threads);
    make_levels(run, 2);
    tier::level &fine = run.h(1), &coarse = run.h(2);
    for (int i = 1; i <= fine.n; ++i) {
      fine.u[i] = std::sin(i);
      fine.f[i] = std::cos(i);
    }
    const std::vector<double> r = residual_of(run.system, run.system.u), before = run.system.u;
    std::vector<double> scratch(r.size());

    tier::resc(fine, coarse, tier::vector(scratch.data()));

    for (std::size_t i = 1; i <= 1000; ++i) {
      EXPECT_NEAR(coarse.f[static_cast<int>(i)], 0.5 * r[2 * i - 2] + r[2 * i - 1] + 0.5 * r[2 * i], 1e-14);
      EXPECT_EQ(coarse.u[static_cast<int>(i)], 0.0);
      coarse.u[static_cast<int>(i)] = static_cast<double>(i);
    }
    tier::inta(fine, coarse);
    EXPECT_NEAR(run.system.u[1], before[1] + 1.0, 1e-15);
    EXPECT_NEAR(run.system.u[2], before[2] + 1.5, 1e-15);
    EXPECT_NEAR(run.system.u[2000], before[2000] + 500.0, 1e-12);
  }
}

TEST(CoarsestCheck, SpeaksWhenTheCoarsestLevelIsNotSolved) {
  test_run run(line(63));
  make_levels(run, 3);
  run.c.nrc = tier::coarsest_solver::smoothing;
  tier::parm().itmax_conv = 3;
  run.c.residual_check = true;

  testing::internal::CaptureStdout();
  run.solve();

  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_THAT(output, HasSubstr("Insufficient residual reduction on coarsest level: "));
  EXPECT_THAT(output, HasSubstr("Otherwise, there may be convergence problems for relaxation."));
}

}  // namespace
