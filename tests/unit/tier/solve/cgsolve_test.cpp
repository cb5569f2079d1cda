// Coarsest-level solvers on a single level: every method, singular systems, trivial ones, failures.
#include "tier/solve/cgsolve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/tier/known_hierarchy.h"
#include "support/tier/systems.h"
#include "tier/solve/coarse_solvers.h"
#include "tier/solve/level_factors.h"
#include "tier/store/ierr.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

/// One application of the coarsest-level solver alone, which needn't reach the target of the cycles.
int solve_once(test_run& run) {
  run.c.ncgrad = tier::accelerator::none;
  run.c.ncycle = 1;
  run.c.nrd = run.c.nru = run.c.nrc == tier::coarsest_solver::smoothing ? 12 : 0;
  const int ierr = run.solve();
  return ierr == tier::warn_cycles_not_converged ? 0 : ierr;
}

struct method_case {
  int nrc;
  double largest_residual;
  bool full_pivoting = false;
};

class CoarsestSolvers : public testing::TestWithParam<method_case> {};

TEST_P(CoarsestSolvers, SolveToTheirAccuracy) {
  tier::parm().full_pivoting = GetParam().full_pivoting;
  for (sparse_system (*make)() :
       {+[] { return five_point(10); }, +[] { return plane_stress(5, 3); }, +[] { return seven_point(5); }}) {
    test_run run(make());
    set_known_solution(run.system);
    run.c.nrc = tier::coarsest_solver{GetParam().nrc};
    run.c.isym = tier::symmetry::symmetric;

    EXPECT_EQ(solve_once(run), 0);
    EXPECT_LE(run.relative_residual(), GetParam().largest_residual);
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, CoarsestSolvers,
                         testing::Values(method_case{1, 0.9}, method_case{2, 0.01}, method_case{3, 0.01},
                                         method_case{4, 0.01}, method_case{5, 0.01}, method_case{6, 1e-12},
                                         method_case{6, 1e-12, true}, method_case{7, 1e-12},
                                         method_case{8, 1e-12}, method_case{10, 1e-12},
                                         method_case{99, 1.0}));

// Row sums are zero per function, f is in the range: direct methods pin the first variable of each function.
// The factors of a kept hierarchy see that the method changes.
TEST(SingularSystems, ArePinnedWhereIscaleSaysSo) {
  test_run run(coupled(five_point_neumann(6), 2, 0.0));
  set_known_solution(run.system);
  run.c.iscale[1] = run.c.iscale[2] = 1;
  for (const int nrc : {7, 8, 6, 8, 10}) {
    std::fill(run.system.u.begin(), run.system.u.end(), 0.0);
    run.c.nrc = tier::coarsest_solver{nrc};

    EXPECT_EQ(solve_once(run), 0) << nrc;
    EXPECT_LE(run.relative_residual(), 1e-11) << nrc;
    if (nrc != 8) {
      EXPECT_EQ(run.system.u[0], 0.0);
      EXPECT_EQ(run.system.u[1], 0.0);
    }
  }
}

TEST(TrivialSystems, OneAndTwoUnknowns) {
  const auto one = [] {
    sparse_system s;
    s.add_row(4.0, {});
    s.f = {2.0};
    return s;
  };
  test_run regular(one()), singular(one());
  regular.c.nrc = singular.c.nrc = tier::coarsest_solver::of_user;  // not reached
  singular.c.iscale[1] = 1;
  EXPECT_EQ(solve_once(regular), 0);
  EXPECT_EQ(regular.system.u[0], 0.5);
  EXPECT_EQ(solve_once(singular), 900);

  sparse_system pair;
  pair.add_row(3.0, {{2, -3.0}});
  pair.add_row(3.0, {{1, -3.0}});
  pair.f = {-6.0, 6.0};
  test_run two(pair);
  two.c.iscale[1] = 1;
  EXPECT_EQ(solve_once(two), 0);
  EXPECT_EQ(two.system.u, (std::vector<double>{0.0, 2.0}));
}

struct failure_case {
  int nrc, ierr;
  const char* words;
  bool full_pivoting = false;
};

class CoarsestFailures : public testing::TestWithParam<failure_case> {};

sparse_system zero_pivots() {
  sparse_system s;  // rows 1 and 2 are equal
  s.add_row(1.0, {{2, 1.0}});
  s.add_row(1.0, {{1, 1.0}});
  s.add_row(1.0, {{1, -0.5}});
  return s;
}

TEST_P(CoarsestFailures, NameTheMethod) {
  tier::parm().full_pivoting = GetParam().full_pivoting;
  test_run run(zero_pivots());
  run.c.nrc = tier::coarsest_solver{GetParam().nrc};
  run.c.isym = tier::symmetry::symmetric;

  testing::internal::CaptureStdout();
  EXPECT_EQ(solve_once(run), GetParam().ierr);
  EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(GetParam().words));
}

INSTANTIATE_TEST_SUITE_P(
    Methods, CoarsestFailures,
    testing::Values(failure_case{2, 920, "ILU(0) decomposition failed in (cgc0)"},
                    failure_case{3, 930, "ILUT decomposition failed in (cgstab0)"},
                    failure_case{6, 960, "Error in matrix decomposition (full Gauss)!"},
                    failure_case{6, 960, "Error in matrix decomposition (full Gauss)!", true},
                    failure_case{7, 970, "Error in matrix decomposition (sparse Gauss)!"},
                    failure_case{9, 1, "No solver currently installed by USER (user_solve)!"},
                    failure_case{10, 980, "Error in dense direct solver"},
                    failure_case{11, 20, "invalid value for the coarsest grid solver (solve-data)!"},
                    failure_case{12, 20, "invalid value for nrc (solve-data)!"}));

TEST(CoarsestCg, WarnsRestartsAndFailsOnIndefiniteMatrices) {
  sparse_system s;
  s.add_row(1.0, {{2, 2.0}});
  s.add_row(1.0, {{1, 2.0}});
  s.add_row(1.0, {});
  s.f = {1.0, -1.0, 0.0};
  test_run run(s);
  run.c.nrc = tier::coarsest_solver::diagonal_cg;
  run.c.isym = tier::symmetry::symmetric;

  testing::internal::CaptureStdout();
  EXPECT_EQ(solve_once(run), 920);
  const std::string output = testing::internal::GetCapturedStdout();
  for (const char* words :
       {"Negative (Ap,p) on coarsest level (cgc0)!", "Modification of initial guess (cgc0).",
        "*** ERROR: Breakdown of CG on coarsest level in (cgc0): "
        "Coarsest level matrix is not positive definite!\n"})
    EXPECT_THAT(output, HasSubstr(words));
}

TEST(CoarsestCg, GoesToBicgstabWithoutSymmetry) {
  test_run run(five_point(6));
  run.c.isym = tier::symmetry::general;
  run.c.nrc = tier::coarsest_solver::ilu_cg;
  EXPECT_EQ(solve_once(run), 0);
  EXPECT_EQ(run.c.nrc, tier::coarsest_solver::ilut_bicgstab);
  run.c.nrc = tier::coarsest_solver::diagonal_cg;
  EXPECT_EQ(solve_once(run), 0);
  EXPECT_EQ(run.c.nrc, tier::coarsest_solver::diagonal_bicgstab);
}

TEST(CoarseFillLimit, FollowsItsSign) {
  sparse_system s = random_rows(20, 1, 5.0, 1);
  s = sparse_system();
  for (int i = 1; i <= 20; ++i) {  // 20 rows of 5 entries
    std::vector<std::pair<int, double>> others;
    for (int k = 1; k <= 4; ++k) others.emplace_back((i + k - 1) % 20 + 1, -1.0);
    s.add_row(5.0, others);
  }
  tier::hierarchy h;
  set_first_level(h, s);
  for (const auto& [lfil_cl, expected] :
       {std::pair{-10, 5}, {-20, 10}, {-100, 20}, {0, 20}, {7, 7}, {50, 20}}) {
    EXPECT_EQ(tier::coarse_fill_limit(h(1), lfil_cl), expected) << lfil_cl;
  }
}

// Pivots off the diagonal fill in more than the order foresees: the store grows by at least 1.21.
TEST(SparseGaussStore, GrowsAndReportsEachAttempt) {
  tier::parm().itrace_clsol = 1;
  test_run run(random_rows(400, 6, 1e-3, 2));
  set_known_solution(run.system);

  testing::internal::CaptureStdout();
  EXPECT_EQ(solve_once(run), 0);
  const std::string output = testing::internal::GetCapturedStdout();

  EXPECT_LE(run.relative_residual(), 1e-8);
  EXPECT_THAT(output, HasSubstr("cgsolve: initial attempt : licn=lirn "));
  EXPECT_THAT(output, HasSubstr("Decomposition - new attempt (sparse Gauss)"));
  EXPECT_THAT(output, HasSubstr("cgsolve: attempt 2 licn, lirn "));
}

}  // namespace
