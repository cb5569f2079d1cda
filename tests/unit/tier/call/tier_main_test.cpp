// Whole calls: what is solved, what stays, re-starts, the control layer,
// transformations, and failing allocations.
#include "tier/call/tier_main.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <utility>
#include <vector>

#include "support/tier/systems.h"
#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/store/parameters.h"
#include "tier/store/work_arrays.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing_support::coupled_call;
using testing_support::poisson_call;
using testing_support::position;
using testing_support::tier_call;
using tier::parm;

constexpr double solved = 1.1e-8;

/// One triangle of a symmetric matrix.
testing_support::sparse_system half_of(const testing_support::sparse_system& whole, bool lower) {
  testing_support::sparse_system half;
  for (int i = 1; i <= whole.n; ++i) {
    std::vector<std::pair<int, double>> others;
    for (std::size_t p = position(whole.ia[position(i)]) + 1; p < position(whole.ia[position(i + 1)]); ++p)
      if (const int column = whole.ja[p]; (column < i) == lower)
        others.emplace_back(column, whole.entry(i, column));
    half.add_row(whole.entry(i, i), others);
  }
  return half;
}

void expect_nothing_held() {
  EXPECT_EQ(tier::memory().nisum, 0);
  EXPECT_EQ(tier::memory().ndsum, 0);
}

TEST(Tier, SolvesOnOneLevelAndOnManyAndFreesAll) {
  for (const int nptmn : {100, 10}) {
    for (tier_call call : {poisson_call(9), coupled_call(7)}) {
      parm().nptmn = nptmn;
      call.run();

      int levels = 0;
      TIER_GET_LEVELS_CREATED(&levels);
      EXPECT_EQ(call.ierr, 0) << call.said;
      EXPECT_LT(call.relative_residual(), solved);
      EXPECT_EQ(levels > 1, nptmn == 10);
      expect_nothing_held();
    }
  }
}

TEST(Tier, TellsOfNoLevelsAfterAnError) {
  tier_call call = poisson_call(9);
  call.run();
  for (const int nsolve : {0, 4}) {
    call.nsolve = nsolve;
    call.iswtch = nsolve == 0 ? 5120 : 3120;  // sound, then a re-start without hierarchy
    call.run();
    int levels = 0;
    TIER_GET_LEVELS_CREATED(&levels);
    EXPECT_EQ(levels, call.ierr > 0 ? -1 : 1) << call.said;
  }
  EXPECT_GT(call.ierr, 0);
}

// Variants 4 and 5 drop products of zero, which a pattern without regard to values must keep.
TEST(Tier, NamesTheGalerkinVariantThatRuns) {
  for (const auto& [zeros, words] : {std::pair{false, "dynamic parallel memory management"},
                                     {true, "dynamic memory management using lists"}}) {
    tier_call call = poisson_call();
    parm().ntyp_galerkin = 4;
    parm().glk_mult_zeros = zeros;
    call.idump = 0;
    call.run();
    EXPECT_NE(call.said.find(std::string("variant:           ") + words), std::string::npos) << call.said;
  }
}

TEST(Tier, SolvesOnTheFinestLevelAlone) {
  tier_call call = poisson_call();
  parm().nptmn = 10;
  parm().clsolver_finest = 1;
  call.run();
  int levels = 0;
  TIER_GET_LEVELS_CREATED(&levels);
  EXPECT_EQ(std::pair(call.ierr, levels), std::pair(0, 1)) << call.said;
  EXPECT_LT(call.relative_residual(), solved);
}

TEST(Tier, RepeatsItsBits) {
  tier_call first = coupled_call(20), second = coupled_call(20);
  first.run();
  second.run();
  EXPECT_EQ(first.s.u, second.s.u);
  EXPECT_EQ(first.res_out, second.res_out);
}

TEST(Tier, ReturnsAtOnceForIswtchZero) {
  tier_call call = poisson_call();
  call.iswtch = 0;
  call.nsys = 1000;
  call.s.u[3] = 17.0;
  call.run();
  EXPECT_EQ(std::tuple(call.ierr, call.ncyc_done, call.res_in, call.res_out, call.s.u[3]),
            std::tuple(0, 0, -1.0, -1.0, 17.0));
}

TEST(Tier, GivesBackTheEstimatesThatItUsed) {
  tier_call call = poisson_call();
  call.g_cmplx = 3.5;
  call.run();
  EXPECT_EQ(std::tuple(call.a_cmplx, call.g_cmplx, call.p_cmplx, call.w_avrge),
            std::tuple(2.5, 3.5, 1.8, 2.5));
}

TEST(Tier, SaysOnlyErrorsAtMessageModeMinusTwo) {
  tier_call call = poisson_call();
  parm().mode_mess = -2;
  call.s.ia.back() += 1;
  call.run();
  EXPECT_EQ(call.said, "*** ERROR: Wrong pointer value: ia0(nnu+1)-1 <> nna in (tier_main)!\n");
}

TEST(Tier, EndsOnValuesThatAreNotFinite) {
  constexpr double bad[] = {std::numeric_limits<double>::quiet_NaN(),
                            std::numeric_limits<double>::infinity()};
  for (const double value : bad) {
    for (const bool in_f : {true, false}) {
      for (const int nptmn : {100, 10}) {
        tier_call call = poisson_call();
        parm().nptmn = nptmn;
        call.ifirst = 0;
        (in_f ? call.s.f : call.s.u)[20] = value;
        call.run();
        EXPECT_THAT(call.ierr, testing::AnyOf(210, 211)) << call.said;
        expect_nothing_held();
      }
    }
  }
}

TEST(Tier, GoesByUnknownsWherePointsAreAskedForButNotGiven) {
  for (const int nsolve : {3, 4, 5, 30301, 300010, 40001, 400021, 5010141, 30000040, 50400002}) {
    tier_call call = coupled_call(7);
    call.ndip = 1;
    call.nsolve = nsolve;
    call.run();
    EXPECT_EQ(call.ierr, -1) << nsolve << "\n" << call.said;
    EXPECT_THAT(call.said, HasSubstr("Using the unknown-based approach instead!"));
    EXPECT_LT(call.relative_residual(), solved);
  }
}

TEST(Tier, FailsOnAZeroResidualAndOnABadFirstResidual) {
  tier_call call = poisson_call();
  call.s.f.assign(call.s.f.size(), 0.0);
  call.run();
  EXPECT_EQ(call.ierr, 200);
  EXPECT_THAT(call.said, HasSubstr("Freshly computed first-guess residual too tiny (tier_solve)!"));

  call = poisson_call();
  parm().ntake_res_in = 1;
  call.res_in = std::nan("");
  call.run();
  EXPECT_EQ(call.ierr, 50);
  EXPECT_THAT(call.said, HasSubstr("Residual is NaN(tier_solve)!"));
}

struct ReStart {
  const char* name;
  int ierr;
  const char* words;
  void (*change)(tier_call&);
};

class ReStartTest : public testing::TestWithParam<ReStart> {};

TEST_P(ReStartTest, UsesTheHierarchyOrSaysWhyNot) {
  tier_call call = coupled_call(12);
  parm().nptmn = 20;
  call.iswtch = 4120;
  call.run();
  ASSERT_EQ(call.ierr, 0) << call.said;
  EXPECT_GT(tier::memory().ndsum, 0);

  call.iswtch = 1120;
  GetParam().change(call);
  call.run();

  EXPECT_EQ(call.ierr, GetParam().ierr) << call.said;
  EXPECT_THAT(call.said, HasSubstr(GetParam().words));
  if (call.ierr == 0) {
    EXPECT_LT(call.relative_residual(), solved);
    return;
  }
  expect_nothing_held();
  call.run();
  EXPECT_EQ(call.ierr, GetParam().ierr == 51 ? 51 : 52);  // the hierarchy is gone
}

INSTANTIATE_TEST_SUITE_P(
    Calls, ReStartTest,
    testing::Values(ReStart{"SameMatrix", 0, "TIER re-start: Coarse-levels not changed.",
                            [](tier_call& x) { x.s.f[0] = 5.0; }},
                    ReStart{"NewValues", 0, "TIER re-start: Recomputing coarse-level operators",
                            [](tier_call& x) {
                              x.iswtch = 3120;
                              for (double& value : x.s.a) value *= 3.0;
                            }},
                    ReStart{"Rows", 54, "TIER re-start terminated - illegal change in <nna>",
                            [](tier_call& x) { x = coupled_call(11), x.iswtch = 1120; }},
                    ReStart{"Levelx", 53, "TIER re-start terminated - illegal change in <levelx>",
                            [](tier_call&) { parm().levelx = 3; }},
                    ReStart{"Nptmn", 53, "TIER re-start terminated - illegal change in <nptmn>",
                            [](tier_call&) { parm().nptmn = 21; }},
                    ReStart{"Nsolve", 53, "TIER re-start terminated - illegal change in <nsolve>",
                            [](tier_call& x) { x.nsolve = 21; }},
                    ReStart{"Npnts", 53, "TIER re-start terminated - illegal change in <npnts>",
                            [](tier_call& x) { x.ndip = 1; }},
                    ReStart{"Igam", 53, "TIER re-start terminated - illegal change in <igam>",
                            [](tier_call& x) { x.ncyc = 2300100; }},
                    ReStart{"Structure", 100, "illegal change of struct_ident after last setup",
                            [](tier_call& x) { x.iswtch = 3120, parm().struct_ident = true; }},
                    ReStart{"AfterCleanup", 52, "no AMG decomposition available in (tier_main)!",
                            [](tier_call& x) { TIER_CLEANUP(&x.ierr); }},
                    ReStart{"AfterRefresh", 52, "no AMG decomposition available in (tier_main)!",
                            [](tier_call& x) { TIER_REFRESH(&x.ierr); }},
                    ReStart{"AfterIswit5", 52, "no AMG decomposition available in (tier_main)!",
                            [](tier_call& x) { x.iswtch = 5120, x.run(), x.iswtch = 1120; }},
                    ReStart{"AfterLeave", 51, "TIER re-start requires an initial call with iswit=4!",
                            [](tier_call& x) { TIER_LEAVE(&x.ierr); }}),
    [](const testing::TestParamInfo<ReStart>& tested) { return tested.param.name; });

TEST(Tier, KeepsMemoryOverRefreshWhereAsked) {
  tier_call call = coupled_call(12);
  parm().nptmn = 20;
  parm().keepmem = true;
  call.iswtch = 4120;
  call.run();
  const auto held = tier::memory().ndsum;
  TIER_REFRESH(&call.ierr);
  EXPECT_GT(tier::memory().ndsum, held / 2);

  call.iswtch = 5120;
  call.run();
  EXPECT_EQ(call.ierr, 0) << call.said;
  expect_nothing_held();
}

TEST(Tier, LeaveResetsParametersButTheLog) {
  int ierr = -1;
  const int one = 1;
  const double factor = 0.7;
  TIER_OMEGA_JACOBI_ALLOC(&one, &ierr);
  parm().levelx = 3;
  parm().logio = 17;
  parm().logfile = "kept";
  TIER_LEAVE(&ierr);
  EXPECT_EQ(std::tuple(ierr, parm().levelx, parm().logio, parm().logfile, parm().refresh_called),
            std::tuple(0, tier::unset_integer, 17, std::string("kept"), true));
  TIER_OMEGA_JACOBI_SET(&one, &factor, &ierr);
  EXPECT_EQ(ierr, 20);  // the factors are gone
}

/// Each row's entries by column: set-up may reorder within a row.
std::vector<std::vector<std::pair<int, double>>> rows_of(const testing_support::sparse_system& s) {
  std::vector<std::vector<std::pair<int, double>>> rows(s.f.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t p = position(s.ia[i]); p < position(s.ia[i + 1]); ++p)
      rows[i].emplace_back(s.ja[p], s.a[p]);
    std::sort(rows[i].begin(), rows[i].end());
  }
  return rows;
}

TEST(Tier, FreesEverythingWhicheverAllocationFails) {
  struct kind {
    const char* name;
    void (*choose)(tier_call&);
  };
  const kind kinds[] = {
      {"one level", [](tier_call&) { parm().nptmn = 100; }},
      {"levels", [](tier_call&) { parm().nptmn = 8; }},
      {"kept, automatic", [](tier_call& x) { parm().nptmn = 8, x.iswtch = 6120; }},
      {"ILUT, BiCGstab, iterative coarsest level",
       [](tier_call& x) { parm().nptmn = 8, parm().nrc = 3, x.nsolve = 12, x.ncyc = 1200100; }},
      {"points, CG, W, dense",
       [](tier_call& x) {
         x = coupled_call(6), x.matrix = 12, x.nsolve = 5040000, x.ncyc = 3100100;
         parm().nptmn = 8, parm().nrc = 10, parm().show_un_res = 2, parm().nstar_typ = 3;
       }},
      {"one-level flexible CG",
       [](tier_call& x) { x.matrix = 12, x.ncyc = 6400100, parm().iauto_stop = 110202; }},
      {"half stored, scaled", [](tier_call& x) {
         x = tier_call(half_of(x.s, true)), x.matrix = 32, x.chktol = 0.0;
         parm().modify_mat = 23;
         parm().nptmn = 8;
       }}};
  for (const kind& k : kinds) {
    tier::reset_parameters();
    int failures = 0;
    for (bool done = false; !done; ++failures) {
      tier_call call = poisson_call(8);
      k.choose(call);
      const auto matrix = rows_of(call.s);
      tier::memory().fail_at = tier::memory().allocations + failures;
      call.run();
      done = call.ierr == 0;
      if (!done) {
        ASSERT_THAT(call.ierr, testing::AnyOf(60, 70)) << k.name << failures << call.said;
        ASSERT_THAT(call.said, HasSubstr("*** ERROR: "));
      } else {
        TIER_CLEANUP(&call.ierr);  // of the kept hierarchy
      }
      ASSERT_EQ(rows_of(call.s), matrix) << k.name << failures;  // the caller's, though rows were moved
      expect_nothing_held();
    }
    EXPECT_GT(failures, 5) << k.name;
  }
  tier::memory().fail_at = -1;
}

TEST(Tier, LimitsGrowthWithoutExtension) {
  for (const auto& [iswtch, ierr] : {std::pair{5020, 10}, {5120, 0}}) {
    tier_call call = poisson_call();
    parm().nptmn = 10;
    call.w_avrge = call.g_cmplx = 1.0;
    call.iswtch = iswtch;
    call.run();
    EXPECT_EQ(call.ierr, ierr) << call.said;
    if (ierr != 0) {
      EXPECT_THAT(call.said, HasSubstr("Insufficient dimensioning: <w> in (w_extent)"));
    }
    expect_nothing_held();
  }
}

TEST(Control, SkipsASolutionThatIsGoodEnough) {
  tier_call call = poisson_call();
  parm().mode_mess = 1;
  parm().nptmn = 20;
  call.eps = -1e-6;
  call.run();
  const auto solution = call.s.u;
  call.ifirst = 0;

  call.run();
  EXPECT_THAT(call.said,
              HasSubstr("Residual to be undershot = 1.000000e-06\n>>> CNTRL: TIER solver skipped."));
  EXPECT_EQ(std::tuple(call.ierr, call.ncyc_done, call.s.u), std::tuple(0, 0, solution));
  EXPECT_LE(call.res_out, 1e-6);
  EXPECT_EQ(call.res_in, call.res_out);

  parm().ncyc_min = 2;
  call.run();
  EXPECT_THAT(call.said, HasSubstr("TIER solver will be performed anyway: user-enforced (ncyc_min>0)."));
  EXPECT_EQ(call.ncyc_done, 2);

  parm().ncyc_min = 0;
  call.iswtch = 4120;
  call.run();
  EXPECT_THAT(call.said, HasSubstr("TIER setup will be performed anyway: user-enforced (iswit=4)."));
  EXPECT_GT(tier::memory().ndsum, 0);
}

TEST(Control, DoesNothingForNoCycles) {
  tier_call call = poisson_call();
  parm().mode_mess = 1;
  parm().nptmn = 20;
  call.ncyc = 1300000;
  call.run();
  EXPECT_THAT(call.said, HasSubstr("Nothing to do since ncycle=0 on input."));
  EXPECT_EQ(std::tuple(call.ierr, call.ncyc_done, call.res_in, call.res_out), std::tuple(0, 0, -1.0, -1.0));

  call.iswtch = 4120;
  call.run();
  call.iswtch = 1120;
  call.ncyc = 1300100;
  call.run();  // the hierarchy of the call without cycles
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), solved);
}

TEST(Control, RenewsTheHierarchyWhenItHasBecomeBad) {
  tier_call call = poisson_call(20);
  parm().mode_mess = 1;
  parm().nptmn = 20;
  call.iswtch = 6120;
  call.run();
  EXPECT_THAT(call.said, HasSubstr("Performing TIER setup"));
  EXPECT_LT(call.relative_residual(), solved);

  parm().block_scale = 1;
  call.run();
  EXPECT_EQ(call.ierr, -50);  // the warning outlives the test of convergence
  EXPECT_THAT(call.said, HasSubstr("Testing convergence with <= 10 cycles"));
  EXPECT_THAT(call.said, Not(HasSubstr("Performing TIER setup")));
  EXPECT_LT(call.relative_residual(), solved);

  auto other = testing_support::five_point(20, -1.0, -1e-4);  // another matrix with the same pattern
  call.s.a = other.a;
  for (std::size_t i = 0; i < call.s.ja.size(); ++i) call.s.ja[i] = other.ja[i];
  call.ncyc = 1000200;  // stand-alone cycles feel it most
  parm().ncgrad_default = 0;
  parm().cntrl_retry_iter = 5;
  parm().rho_min = 0.3;
  call.run();
  EXPECT_THAT(call.said, HasSubstr("Performing TIER setup")) << call.said;
  EXPECT_EQ(call.ierr, 0);
  EXPECT_LT(call.relative_residual(), solved);

  parm().max_calls = 1;
  call.run();
  EXPECT_THAT(call.said, HasSubstr("Maximum number of calls reached. Enforcing new setup."));

  for (const auto& [iswtch, words] : {std::pair{7120, "TIER setup partially reused (iswit=7)."},
                                      {8120, "TIER setup completely reused (iswit=8)."}}) {
    call.iswtch = iswtch;
    call.run();
    EXPECT_THAT(call.said, HasSubstr(words));
    EXPECT_EQ(call.ierr, 0);
  }
}

TEST(Transformed, SystemsHaveTheSolutionOfTheirOrigin) {
  tier_call plain = poisson_call(12);
  plain.run();
  for (const int modify : {0, 2, 3, 23}) {
    for (const int matrix : {22, 222, 226, 227}) {
      tier_call call = poisson_call(12);
      parm().modify_mat = modify;
      parm().nptmn = 20;
      call.matrix = matrix;
      call.ifirst = 0;
      call.s.u.assign(call.s.u.size(), 0.5);
      for (std::size_t i = 0; i < call.s.a.size(); ++i)  // column 3 in another unit
        if (call.s.ja[i] == 3) call.s.a[i] *= 1e3;
      const auto a = call.s.a;
      const auto ja = call.s.ja;
      call.run();
      EXPECT_THAT(call.ierr, testing::AnyOf(0, -863)) << modify << ' ' << matrix << call.said;
      EXPECT_NEAR(call.s.u[2], plain.s.u[2] * 1e-3, 1e-9);
      EXPECT_NEAR(call.s.u[50], plain.s.u[50], 1e-6);
      if (modify != 0 || matrix != 22) {
        EXPECT_EQ(std::tuple(call.s.a, call.s.ja), std::tuple(a, ja));
      }
      expect_nothing_held();
    }
  }
}

/// Rows in units that differ by factors up to 1e5.
tier_call badly_scaled_call() {
  tier_call call = poisson_call(12);
  for (std::size_t i = 0; i < call.s.f.size(); ++i) {
    const double unit = std::pow(10.0, static_cast<double>(i % 6));
    call.s.f[i] *= unit;
    for (int p = call.s.ia[i]; p < call.s.ia[i + 1]; ++p) call.s.a[position(p)] *= unit;
  }
  parm().nptmn = 20;
  return call;
}

TEST(Transformed, ResidualsAreOfTheCallersSystem) {
  for (const int matrix : {12, 126, 226}) {
    tier_call call = badly_scaled_call();
    if (matrix == 12) parm().modify_mat = 23;
    call.matrix = matrix;
    call.ncyc = 1100100;  // conjugate gradients, where the scaled matrix is symmetric
    int steps = 0;
    for (const int iswtch : {4120, 1120}) {
      call.iswtch = iswtch;
      std::fill(call.s.u.begin(), call.s.u.end(), 0.0);
      const auto a = call.s.a;
      const auto ja = call.s.ja;
      call.run();
      EXPECT_NEAR(call.res_in, testing_support::euclidean(call.s.f), 1e-9 * call.res_in) << matrix;
      EXPECT_NEAR(call.res_out / call.res_in, call.relative_residual(),
                  1e-3 * call.relative_residual() + 1e-14);
      EXPECT_EQ(call.ierr, call.res_out <= 1e-8 * call.res_in ? 0 : -863) << matrix << call.said;
      if (iswtch == 4120) steps = call.ncyc_done;
      EXPECT_LE(call.ncyc_done, steps + 2) << matrix;  // a re-start scales as the set-up did
      EXPECT_EQ(std::tuple(call.s.a, call.s.ja), std::tuple(a, ja));
    }
    int ierr = 0;
    TIER_CLEANUP(&ierr);
  }
}

// Loads in the rows of the smallest unit alone: rounding and errors of the others are large in the caller's
// units.
TEST(Transformed, AScaledSolutionThatMissesTheCallersTargetIsNoQuietOne) {
  tier_call call = badly_scaled_call();
  for (std::size_t i = 0; i < call.s.f.size(); ++i) {
    if (i % 6 != 0) call.s.f[i] = 0.0;
    for (int p = call.s.ia[i]; i % 6 != 0 && p < call.s.ia[i + 1]; ++p) call.s.a[position(p)] *= 1e4;
  }
  call.matrix = 226;
  call.run();
  EXPECT_GT(call.res_out, 1e-8 * call.res_in);
  EXPECT_EQ(call.ierr, -863) << call.said;
}

TEST(Transformed, HalfStorageSolvesTheWholeMatrix) {
  tier_call whole = poisson_call(12);
  whole.matrix = 12;
  whole.run();
  for (const bool lower : {true, false}) {
    tier_call call(half_of(whole.s, lower));
    parm().nptmn = 20;
    call.matrix = 32;
    call.run();
    EXPECT_EQ(call.ierr, 0) << call.said;
    for (std::size_t i = 0; i < call.s.u.size(); ++i) ASSERT_NEAR(call.s.u[i], whole.s.u[i], 1e-6);

    for (const int iswtch : {4120, 3120, 1120}) {
      call.iswtch = iswtch;
      call.run();
      EXPECT_EQ(call.ierr, 0) << call.said;
      EXPECT_NEAR(call.s.u[70], whole.s.u[70], 1e-6);
    }
    call.iswtch = 5120;
    call.matrix = 31;  // claims row sums of zero
    call.chktol = 1e-6;
    call.run();
    EXPECT_THAT(call.said, HasSubstr("Parameter <irow0> may be wrong. Check!"));
  }
}

TEST(Transformed, DiagonalsAreLargerWhileItSolves) {
  tier_call call = poisson_call(12);
  parm().modify_mat = 1;
  parm().eps_diag = 1e-3;
  const auto a = call.s.a;
  call.run();
  EXPECT_EQ(call.s.a, a);
  for (std::size_t i = 0; i < call.s.f.size(); ++i) call.s.a[position(call.s.ia[i])] *= 1.001;
  EXPECT_LT(call.relative_residual(), solved);
}

TEST(Tier, DumpsItsLevels) {
  tier_call call = poisson_call(12);
  parm().nptmn = 20;
  parm().filnam_dump = testing::TempDir() + "dumped";
  call.idump = 2;
  call.run();
  int levels = 0, rows = 0, columns = 0, entries = 0;
  TIER_GET_LEVELS_CREATED(&levels);
  ASSERT_GT(levels, 1);
  for (int k = 1; k <= levels; ++k)
    EXPECT_TRUE(std::filesystem::exists(parm().filnam_dump + std::to_string(k) + ".matrix.mtx"));
  std::ifstream in(parm().filnam_dump + "1.interp.mtx");
  std::string head;
  std::getline(in, head);
  in >> rows >> columns >> entries;
  EXPECT_EQ(head, "%%MatrixMarket matrix coordinate real general");
  EXPECT_EQ(rows, 144);
  std::vector<double> sums(static_cast<std::size_t>(rows) + 1, 0.0);
  int i = 0, j = 0, read = 0;
  for (double w = 0.0; in >> i >> j >> w; ++read) {
    ASSERT_TRUE(i >= 1 && i <= rows && j >= 1 && j <= columns);
    sums[static_cast<std::size_t>(i)] += w;
  }
  EXPECT_EQ(read, entries);
  EXPECT_NEAR(sums[66], 1.0, 0.1);  // an inner row of vanishing row sum

  parm().filnam_dump = "/nonexistent/folder/x";
  call.run();
  EXPECT_EQ(call.ierr, 1);
  EXPECT_THAT(call.said, HasSubstr("Cannot open dump file </nonexistent/folder/x1.matrix.mtx>"));
  expect_nothing_held();
}

TEST(Tier, ReportsAndFigures) {
  tier_call call = poisson_call(20);
  parm().nptmn = 20;
  call.idump = 1;
  call.iout = 2;
  call.run();
  for (const char* words :
       {"TIER, Release 1.0", "AMG setup information", "complexities and average row-lengths:",
        "req. dimensioning:", "  ndima  >=", "AMG solver information", "Basic Method: AMG on ",
        "Smoothing:  Gauss-Seidel, variable-wise",
        "Acceleration: Flexible GMRES[1] (Krylov dim=30) with 0 pre-steps",
        "Coarse level: Direct solution by", "AMG workcount and statistics", "number of cycles :  ",
        "L2-resid (before):  ", "average reduction:  ", "amg setup time: ", "    relax   ",
        "used peak memory (depends on dimensioning!):"})
    EXPECT_THAT(call.said, HasSubstr(words));

  int levels = 0, nflag = -1;
  double values[11], figures[8];
  TIER_GET_COMPLEXITIES(&levels, values);
  TIER_GET_TIME_AND_MEM(figures);
  TIER_GET_NFLAG(&nflag);
  EXPECT_GT(levels, 1);
  EXPECT_TRUE(values[0] > 1.0 && values[0] < 4.0) << values[0];  // operator complexity
  EXPECT_TRUE(values[5] > 1.0 && values[5] < 2.5) << values[5];  // grid complexity
  EXPECT_EQ(nflag, 0);
  EXPECT_GE(figures[6], figures[4] + figures[5]);  // peak memory
  EXPECT_GE(figures[3], figures[0] + figures[1]);  // seconds in all
  EXPECT_EQ(figures[7], 0.0);
}

}  // namespace
