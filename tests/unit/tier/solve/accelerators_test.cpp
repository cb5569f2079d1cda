// Accelerators on one level with every preconditioner: true residuals, limits, breakdowns, stopping rules.
#include "tier/solve/accelerators.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "support/tier/known_hierarchy.h"
#include "support/tier/systems.h"
#include "tier/store/ierr.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

using enum tier::accelerator;

struct accelerated {
  const char* name;
  sparse_system (*make)();
  tier::accelerator ncgrad;
  int ntyp_cg, igam, nxtyp, most_steps;
};

sparse_system poisson() { return five_point(30); }
sparse_system cube() { return seven_point(9); }
sparse_system turned() { return turned_anisotropy(24, 30.0, 0.05); }
sparse_system flow() { return convection_diffusion(30, 50.0); }
sparse_system strip() { return plane_stress(20, 6); }
sparse_system random_dominant() { return random_rows(500, 8, 6.0, 5); }

class Accelerators : public testing::TestWithParam<accelerated> {};

TEST_P(Accelerators, ReachTheTargetInTheTrueResidual) {
  const accelerated& p = GetParam();
  for (const int threads : {1, 3}) {
    test_run run(p.make());
    use_threads(threads);
    set_known_solution(run.system);
    run.c.ncgrad = p.ncgrad;
    run.c.ntyp_cg = tier::cg_ratio{p.ntyp_cg};
    run.c.igam = tier::cycle_kind{p.igam};
    run.c.nxtyp = tier::smoother_kind{p.nxtyp};
    run.c.nrc = tier::coarsest_solver::none;  // smoothing alone
    run.c.nrd = 2 * 10 + 2;
    run.c.nru = tier::needs_symmetry(p.ncgrad) ? -run.c.nrd : run.c.nrd;
    run.c.has_ip = run.system.nsys > 1;

    EXPECT_EQ(run.solve(), 0);
    EXPECT_LE(run.relative_residual(), 1.00001e-8);
    EXPECT_NEAR(run.results.res_out, euclidean(residual_of(run.system, run.system.u)),
                1e-13 * run.results.res_in);
    EXPECT_LE(run.results.ncyc_done, p.most_steps);
    EXPECT_EQ(run.steps.size(), static_cast<std::size_t>(run.results.ncyc_done) + 1);
    const std::vector<double> first = run.system.u;
    std::fill(run.system.u.begin(), run.system.u.end(), 0.0);
    run.solve();
    EXPECT_EQ(run.system.u, first) << "not the same bits, threads " << threads;
  }
}

INSTANTIATE_TEST_SUITE_P(Systems, Accelerators,
                         testing::Values(accelerated{"GmresDiagonal", poisson, gmres, 1, 5, 0, 400},
                                         accelerated{"GmresIlut", flow, gmres, 1, 6, 0, 30},
                                         accelerated{"GmresGaussSeidel", random_dominant, gmres, 1, 1, 0, 40},
                                         accelerated{"GmresIlu0Smoother", cube, gmres, 1, 1, 1, 20},
                                         accelerated{"GmresIlutpSmoother", strip, gmres, 1, 1, 3, 150},
                                         accelerated{"GmresBlocks", strip, gmres, 1, 1, 5, 400},
                                         accelerated{"GmresBlockIlu", strip, gmres, 1, 1, 6, 120},
                                         accelerated{"BicgstabDiagonal", poisson, bicgstab, 1, 5, 0, 100},
                                         accelerated{"BicgstabIlut", turned, bicgstab, 1, 6, 0, 20},
                                         accelerated{"BicgstabFlow", flow, bicgstab, 1, 1, 2, 20},
                                         accelerated{"OldCgDiagonal", poisson, cg, 1, 5, 0, 120},
                                         accelerated{"OldCgIlu0", strip, cg, 1, 6, 0, 120},
                                         accelerated{"NewCgSymmetricSweeps", turned, cg, 2, 1, 0, 80},
                                         accelerated{"NewCgIlu0", cube, cg, 2, 6, 0, 40},
                                         accelerated{"FlexibleCgDiagonal", cube, flexible_cg, 1, 5, 0, 60},
                                         accelerated{"FlexibleCgIlu0", turned, flexible_cg, 1, 6, 0, 60}),
                         [](const auto& tested) { return tested.param.name; });

struct ending {
  const char* name;
  tier::accelerator ncgrad;
  int ntyp_cg, ierr;
  const char* words;
};

class Limits : public testing::TestWithParam<ending> {};

TEST_P(Limits, WarnAndLeaveTheBestApproximation) {
  for (const int iter_pre : {0, 7}) {
    test_run run(five_point(20));
    run.c.ncgrad = GetParam().ncgrad;
    run.c.ntyp_cg = tier::cg_ratio{GetParam().ntyp_cg};
    run.c.igam = tier::cycle_kind::diagonal;
    run.c.iter_pre = iter_pre;
    run.c.ncycle = 7;

    testing::internal::CaptureStdout();
    const int ierr = run.solve();

    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(GetParam().words));
    EXPECT_EQ(ierr, GetParam().ierr);
    EXPECT_EQ(run.results.ncyc_done, 7);
    EXPECT_NEAR(run.results.res_out, euclidean(residual_of(run.system, run.system.u)),
                1e-9 * run.results.res_out);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Methods, Limits,
    testing::Values(ending{"OldCg", cg, 1, -832, "CG stop: not converged (old_cgc)!"},
                    ending{"NewCg", cg, 2, -832, "CG stop: not converged (new_cgc)!"},
                    ending{"FlexibleCg", flexible_cg, 1, -832, "CG stop: not converged (flexcg_skcycle)!"},
                    ending{"Bicgstab", bicgstab, 1, -842, "BiCGstab stop: not converged (cgstab)!"},
                    ending{"Gmres", gmres, 1, -852, "GMRes stop: not converged (gmres)!"}),
    [](const auto& tested) { return tested.param.name; });

sparse_system singular_incompatible() {
  sparse_system s;  // [1 -1; -1 1], f = (1, 0)
  s.add_row(1.0, {{2, -1.0}});
  s.add_row(1.0, {{1, -1.0}});
  s.f = {1.0, 0.0};
  return s;
}
sparse_system singular() {
  sparse_system s = singular_incompatible();
  s.f = {1.0, 1.0};  // in the null space
  return s;
}
sparse_system indefinite() {
  sparse_system s;  // [1 2; 2 1], f = (1, -1): (f, A f) < 0
  s.add_row(1.0, {{2, 2.0}});
  s.add_row(1.0, {{1, 2.0}});
  s.f = {1.0, -1.0};
  return s;
}

struct breakdown {
  const char* name;
  sparse_system (*make)();
  tier::accelerator ncgrad;
  int ntyp_cg, ierr;
  std::vector<const char*> words;
};

class Breakdowns : public testing::TestWithParam<breakdown> {};

TEST_P(Breakdowns, EndWithTheirError) {
  test_run run(GetParam().make());
  run.c.ncgrad = GetParam().ncgrad;
  run.c.ntyp_cg = tier::cg_ratio{GetParam().ntyp_cg};
  run.c.igam = tier::cycle_kind::diagonal;

  testing::internal::CaptureStdout();
  const int ierr = run.solve();
  const std::string output = testing::internal::GetCapturedStdout();

  EXPECT_EQ(ierr, GetParam().ierr);
  for (const char* words : GetParam().words) EXPECT_THAT(output, HasSubstr(words));
}

INSTANTIATE_TEST_SUITE_P(
    Methods, Breakdowns,
    testing::Values(
        breakdown{"Gmres",
                  singular_incompatible,
                  gmres,
                  1,
                  850,
                  {"*** ERROR: Breakdown of GMRES on level 1 (gmres): Given matrix is singular!\n"}},
        breakdown{"GmresNullSpace", singular, gmres, 1, 850, {}},
        breakdown{"Bicgstab",
                  singular,
                  bicgstab,
                  1,
                  840,
                  {"*** ERROR: Breakdown of BiCGstab on level 1 (cgstab): Given matrix is singular!\n"}},
        breakdown{"BicgstabProgress",
                  singular_incompatible,
                  bicgstab,
                  1,
                  -843,
                  {"Re-start with modified <rbar> on level 1 (cgstab)!",
                   "Re-start of BI-CGSTAB on level 1 (cgstab)!",
                   "BiCGstab on level 1 (cgstab) stopped: too many restarts!"}},
        breakdown{"NewCg",
                  indefinite,
                  cg,
                  2,
                  830,
                  {"Negative (Ap,p) on level 1 (new_cgc)!", "Modification of initial guess (new_cgc).",
                   "*** ERROR: Breakdown of CG on level 1 (new_cgc): too many restarts: "
                   "Given matrix is not positive definite (numerically)!\n"}},
        breakdown{"OldCg", indefinite, cg, 1, 830, {"Negative (Ap,p) on level 1 (old_cgc)!"}},
        breakdown{
            "FlexibleCg", indefinite, flexible_cg, 1, 830, {"Negative (Ap,p) on level 1 (flexcg_skcycle)!"}}),
    [](const auto& tested) { return tested.param.name; });

// A cyclic shift: GMRES stands still until its last step, which sees the whole space.
sparse_system cyclic_shift(int n) {
  sparse_system s;
  for (int i = 1; i <= n; ++i) s.add_row(1e-8, {{i % n + 1, 1.0}});
  std::fill(s.f.begin() + 1, s.f.end(), 0.0);
  return s;
}

TEST(Stagnation, EndsTheRunWhenAsked) {
  for (const int num_old_res : {0, 3}) {
    test_run run(cyclic_shift(30));
    run.c.igam = tier::cycle_kind::diagonal;
    run.c.num_old_res = num_old_res;
    EXPECT_EQ(run.solve(), num_old_res == 0 ? 0 : -852);
    EXPECT_EQ(run.results.ncyc_done, num_old_res == 0 ? 30 : 4);
  }
}

// A regular system solved to rounding does not become a singular one when more is asked for.
TEST(Stopping, RoundingIsNoBreakdown) {
  sparse_system diagonal;
  for (int i = 1; i <= 300; ++i) diagonal.add_row(1.0 + std::sin(i) / 3.0, {});
  test_run run(diagonal);
  set_known_solution(run.system);
  run.c.igam = tier::cycle_kind::diagonal;
  run.c.eps = 1e-17;
  EXPECT_EQ(run.solve(), tier::warn_gmres_quasi_residual);
  EXPECT_LE(run.relative_residual(), 1e-15);
  EXPECT_LE(run.results.ncyc_done, 4);  // a column of rounding alone ends the inner loop
}

// Asked for more than rounding allows, the updated residual goes on falling while the real one stands still.
TEST(Stopping, TheRealResidualEndsWhatTheUpdatedOneWouldNot) {
  for (const auto& [ncgrad, warning] : {std::pair{cg, tier::warn_cg_quasi_residual},
                                        std::pair{bicgstab, tier::warn_bicgstab_quasi_residual}}) {
    test_run run(five_point(20));
    set_known_solution(run.system);
    run.c.igam = tier::cycle_kind::diagonal;
    run.c.ncgrad = ncgrad;
    run.c.ncycle = 500;
    run.c.eps = 1e-18;
    EXPECT_EQ(run.solve(), warning);
    EXPECT_LE(run.relative_residual(), 1e-13);
    EXPECT_LT(run.results.ncyc_done, 200);
  }
}

// The diagonal is the inverse: the first half of the first step solves, and counts as a step.
TEST(Stopping, HalfAStepOfBicgstabCounts) {
  sparse_system diagonal;
  for (int i = 1; i <= 10; ++i) diagonal.add_row(i, {});
  test_run run(diagonal);
  run.c.igam = tier::cycle_kind::diagonal;
  run.c.ncgrad = bicgstab;
  EXPECT_EQ(run.solve(), 0);
  EXPECT_EQ(run.results.ncyc_done, 1);
  EXPECT_EQ(run.steps.size(), 2u);
  EXPECT_LE(run.relative_residual(), 1e-15);
}

TEST(Stopping, LeastCyclesAndLimits) {
  tier::parm().ncyc_min = 40;  // long after the target, and over a restart
  for (const tier::accelerator ncgrad : {cg, bicgstab, gmres, flexible_cg}) {
    test_run run(five_point(10));
    run.c.igam = tier::cycle_kind::incomplete_factors;
    run.c.ncgrad = ncgrad;
    EXPECT_EQ(run.solve(), 0) << tier::code_of(ncgrad);
    EXPECT_EQ(run.results.ncyc_done, 40) << tier::code_of(ncgrad);
  }
}

TEST(Stopping, NormsOfAllTypesDecide) {
  for (const int norm_typ : {0, 1, 2, 3})
    for (const tier::accelerator ncgrad : {bicgstab, gmres}) {
      test_run run(convection_diffusion(15, 10.0));
      run.c.norm_typ = tier::norm_kind{norm_typ};
      run.c.ncgrad = ncgrad;
      run.c.igam = tier::cycle_kind::incomplete_factors;
      ASSERT_EQ(run.solve(), 0);
      const std::vector<double> r = residual_of(run.system, run.system.u);
      double expected = 0.0;
      for (double x : r)
        expected = norm_typ == 1   ? expected + std::abs(x)
                   : norm_typ == 2 ? std::max(expected, std::abs(x))
                                   : 0.0;
      if (norm_typ == 0 || norm_typ == 3) expected = euclidean(r);
      EXPECT_NEAR(run.results.res_out, expected, 1e-13 * run.results.res_in);
      EXPECT_LE(run.results.res_out, 1e-8 * run.results.res_in);
    }
}

}  // namespace
