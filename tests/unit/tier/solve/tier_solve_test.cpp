// Whole solutions over known hierarchies, against the residuals of an independent computation.
#include "tier/solve/tier_solve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "places.h"
#include "support/tier/known_hierarchy.h"
#include "support/tier/systems.h"
#include "tier/store/ierr.h"
#include "tier/store/parameters.h"

namespace {

using testing_support::read_expected_residuals;
using testing_support::read_levels;
using testing_support::read_system;
using testing_support::test_run;

class KnownHierarchy : public testing::TestWithParam<const char*> {};

TEST_P(KnownHierarchy, GivesTheResidualsOfAnIndependentComputation) {
  const std::string folder = places::data.string() + "/tier/" + GetParam();
  test_run run(read_system(folder + "/system.txt"));
  read_levels(folder, run);
  const std::vector<double> expected = read_expected_residuals(folder);

  ASSERT_EQ(run.solve(), 0);

  ASSERT_GT(run.steps.size(), 5u);
  for (std::size_t step = 0; step < std::min<std::size_t>({run.steps.size(), expected.size(), 21}); ++step)
    EXPECT_NEAR(run.steps[step], expected[step], 1e-6 * expected[step]) << "step " << step;
  EXPECT_LE(std::abs(run.results.ncyc_done - static_cast<int>(expected.size()) + 1), 1);
  EXPECT_LE(run.relative_residual(), 1.0000001e-8);
}

INSTANTIATE_TEST_SUITE_P(Systems, KnownHierarchy,
                         testing::Values("diffusion", "turned-anisotropy", "turned-anisotropy-direct",
                                         "turned-anisotropy-extended", "wall-ribbed"));

// The driver's own rules, on a chain of five levels.
void prepare(test_run& run) {
  for (int k = 1; k < 4; ++k) run.coarsen_line();
}

TEST(Driver, TakesRelativeAbsoluteAndFloorTargets) {
  struct target_case {
    double eps, eps_abs, expected;
  };
  for (const auto& [eps, eps_abs, expected] : {target_case{1e-3, 0.0, 1e-3 * std::sqrt(127.0)},
                                               {-1e-6, 0.0, 1e-6},
                                               {1e-12, 1e-2, 1e-2},
                                               {1e-3, 1e-21, 1e-3 * std::sqrt(127.0)}}) {
    test_run run(testing_support::line(127));
    prepare(run);
    run.c.ncgrad = tier::accelerator::none;
    run.c.eps = eps;
    tier::parm().eps_abs = eps_abs;
    EXPECT_EQ(run.solve(), 0);
    EXPECT_LE(run.steps.back(), expected);
    EXPECT_GT(run.steps[run.steps.size() - 2], expected);
  }
}

TEST(Driver, CountsPreStepsAndDoesNothingWithoutCycles) {
  test_run run(testing_support::line(127));
  prepare(run);
  run.c.iter_pre = 2;
  run.c.ncycle = 3;
  run.c.nrd = run.c.nru = 17;  // Jacobi: V-cycles with C and F steps solve a chain exactly
  EXPECT_EQ(run.solve(), tier::warn_gmres_not_converged);
  EXPECT_EQ(run.results.ncyc_done, 3);
  EXPECT_EQ(run.results.res0, run.steps[2]);  // ncyc_start is 2

  test_run none(testing_support::line(127));
  none.c.ncycle = 0;
  none.c.ncgrad = tier::accelerator::none;
  EXPECT_EQ(none.solve(), 0);
  EXPECT_EQ(none.results.res_out, none.results.res_in);
}

TEST(Driver, OneLevelSweepsRunAtOnce) {
  for (const int igam : {5, 6}) {
    test_run run(testing_support::line(7));
    run.c.igam = tier::cycle_kind{igam};
    run.c.ncgrad = tier::accelerator::none;
    run.c.ncycle = 50;
    EXPECT_EQ(run.solve(), tier::warn_cycles_not_converged);
    EXPECT_EQ(run.results.ncyc_done, 50);
    EXPECT_EQ(run.steps.size(), 2u);
    EXPECT_LT(run.relative_residual(), 0.2);
  }
}

TEST(Driver, EndsOnNonFiniteOrTinyResiduals) {
  struct residual_case {
    double f;
    int ierr;
  };
  for (const auto& [f, ierr] : {residual_case{std::nan(""), tier::ierr_residual_nan},
                                {1e200, tier::ierr_residual_overflow},
                                {std::numeric_limits<double>::infinity(), tier::ierr_residual_overflow},
                                {0.0, tier::ierr_solution_internal}})
    for (const int show_un_res : {0, 1}) {
      test_run run(testing_support::line(127));
      std::fill(run.system.f.begin(), run.system.f.end(), f);
      run.c.show_un_res = show_un_res;
      EXPECT_EQ(run.solve(), ierr) << f;
      EXPECT_EQ(run.system.u, std::vector<double>(127, 0.0));
    }
}

TEST(Driver, ComparesTheCallersFirstResidual) {
  struct given_case {
    double res_in;
    int ierr;
    const char* words;
  };
  tier::parm().ntake_res_in = 1;
  for (const auto& [res_in, ierr, words] :
       {given_case{std::sqrt(127.0), 0, "user-provided res_in is identical to freshly computed one!"},
        {5.0, 0, "user-provided res_in is different from freshly computed one!"},
        {0.0, 50, "User-defined first residual too tiny (tier_solve)!"},
        {-1.0, 200, "One or both of the residuals too tiny (tier_check_res_in)!"},
        {std::nan(""), 50, "Residual is NaN(tier_solve)!"}}) {
    test_run run(testing_support::line(127));
    testing::internal::CaptureStdout();
    run.results.res_in = res_in;
    EXPECT_EQ(run.solve(), ierr);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr(words));
  }
}

TEST(Driver, AllocatesNothingWithinCyclesAndLeavesNothing) {
  for (const int nrc : {1, 2, 3, 7, 10}) {
    const std::int64_t doubles = tier::memory().ndsum, integers = tier::memory().nisum;
    std::int64_t allocations[2] = {-1, -2};
    for (const int cycles : {1, 2}) {
      test_run run(testing_support::line(127));
      prepare(run);
      run.c.nrc = tier::coarsest_solver{nrc};
      run.c.isym = tier::symmetry::symmetric;
      run.c.ncgrad = tier::accelerator::none;
      run.c.eps = 1e-30;
      run.c.ncycle = 3 * cycles;
      const std::int64_t before = tier::memory().allocations;
      run.solve();
      allocations[cycles - 1] = tier::memory().allocations - before;
    }
    EXPECT_EQ(allocations[0], allocations[1]) << nrc;
    EXPECT_EQ(tier::memory().ndsum, doubles);
    EXPECT_EQ(tier::memory().nisum, integers);
  }
}

TEST(Driver, EveryFailedAllocationEndsWith70AndFreesAll) {
  for (std::int64_t fail_at = 0;; ++fail_at) {
    ASSERT_LT(fail_at, 300);
    const std::int64_t doubles = tier::memory().ndsum, integers = tier::memory().nisum;
    int ierr = 0;
    {
      test_run run(testing_support::convection_diffusion(12, 5.0));
      run.c.ncgrad = tier::accelerator::bicgstab;
      run.c.nxtyp = tier::smoother_kind::ilut;
      run.c.nrc = tier::coarsest_solver::sparse_gauss;
      run.c.eps = 1e-6;
      tier::memory().fail_at = tier::memory().allocations + fail_at;
      ierr = run.solve();
      tier::memory().fail_at = -1;
    }
    ASSERT_EQ(tier::memory().ndsum, doubles) << fail_at;
    ASSERT_EQ(tier::memory().nisum, integers) << fail_at;
    if (ierr == 0) break;
    ASSERT_TRUE(ierr == 70 || ierr == 60) << ierr;
  }
}

}  // namespace
