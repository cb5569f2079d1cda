// The level loop: rules that end it, errors, points, aggressive coarsening, threads.
#include "tier/setup/create_levels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <cmath>
#include <functional>

#include "support/tier/known_hierarchy.h"
#include "support/tier/sparse_system.h"
#include "support/tier/systems.h"
#include "tier/codes/setup_data.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"
#include "tier/store/results_of_run.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;

tier::controls quiet_controls() {
  tier::reset_parameters();
  tier::controls c;
  c.ncg = 1;
  c.nwt = 2;
  c.nptmn = 20;
  c.dump_level = -1;
  c.ntyp_galerkin = 2;
  tier::parm().mode_mess = -3;
  return c;
}

sparse_system diagonal_system(int n) {
  sparse_system s;
  for (int i = 1; i <= n; ++i) s.add_row(2.0, {});
  return s;
}

/// Disconnected pairs and single rows: few C or few F.
sparse_system pairs(int count, int singles) {
  sparse_system s;
  for (int k = 1; k <= count; ++k) {
    s.add_row(1.0, {{2 * k, -1.0}});
    s.add_row(1.0, {{2 * k - 1, -1.0}});
  }
  for (int k = 0; k < singles; ++k) s.add_row(1.0, {});
  return s;
}

struct stop_case {
  const char* name;
  std::function<sparse_system()> make;
  std::function<void(tier::controls&)> set;
  const char* stop;
  int levels;
  int warning = 0;
  int nrc = 7;
};
class Stopping : public testing::TestWithParam<stop_case> {};

TEST_P(Stopping, EndsByTheRule) {
  const stop_case& p = GetParam();
  sparse_system s = p.make();
  tier::controls c = quiet_controls();
  p.set(c);
  tier::hierarchy h;
  set_first_level(h, s);
  tier::clear_warning();

  tier::create_levels(h, c, tier::options_of_setup(c));

  EXPECT_EQ(tier::latest_setup().stop, p.stop);
  EXPECT_EQ(h.levels_created, p.levels);
  EXPECT_EQ(h.levels_used, p.levels);
  EXPECT_EQ(tier::last_warning(), p.warning);
  EXPECT_EQ(tier::code_of(c.nrc), p.nrc);
  for (int i = 1; i <= s.n; ++i) ASSERT_EQ(h(1).ja[h(1).ia[i]], i);
}

const auto as_it_is = [](tier::controls&) {};

INSTANTIATE_TEST_SUITE_P(
    Rules, Stopping,
    testing::Values(
        stop_case{"FewVariables", [] { return line(20); }, as_it_is, "low # variables", 1},
        stop_case{"HighDensity", [] { return random_system(25, 20, 0.0, 1); }, as_it_is, "high density", 1},
        stop_case{"Dominance", [] { return diagonal_system(50); }, as_it_is, "diagonal dominance, eps=0.9",
                  1},
        stop_case{"NoStrong", [] { return diagonal_system(50); }, [](auto&) { tier::parm().eps_dd = 1.0; },
                  "no strong connections", 1},
        stop_case{"FewC", [] { return pairs(2, 30); }, as_it_is, "less than3 C-variables (including FC)", 1},
        stop_case{"LowC", [] { return pairs(20, 5); }, as_it_is, "low # C-variables", 1},
        stop_case{"OneLevelAsked", [] { return line(500); }, [](auto& c) { c.levelx = 1; }, "", 1},
        stop_case{"LevelsReached", [] { return line(500); }, [](auto& c) { c.levelx = 3; }, "", 3},
        stop_case{"NegativeLevels", [] { return line(500); }, [](auto& c) { c.levelx = -2; }, "", 2},
        stop_case{"RatioOfExactlyTheEnd", [] { return line(500); },
                  [](auto&) { tier::parm().term_coarsening = tier::parm().slow_coarsening = 0.5; },
                  "inefficient grid reduction", 1, -130},
        stop_case{"SlowGoesOn", [] { return line(500); },
                  [](auto& c) {
                    tier::parm().slow_coarsening = 0.4;
                    c.levelx = 2;
                  },
                  "", 2},
        stop_case{"SlownessEnforced", [] { return line(500); },
                  [](auto&) { tier::parm().lev_coarsening_too_slow = 3; }, "too slow, enforced", 2},
        stop_case{"EmergencyOnALargeCoarsestLevel", [] { return line(500); },
                  [](auto& c) {
                    c.levelx = 2;
                    tier::parm().nptmax = 100;
                  },
                  "", 2, 0, 3},
        stop_case{"NoEmergencyForAnIterativeSolver", [] { return line(500); },
                  [](auto& c) {
                    c.levelx = 2;
                    c.nrc = tier::coarsest_solver::smoothing;
                    tier::parm().nptmax = 100;
                  },
                  "", 2, 0, 1}),
    [](const auto& c) { return std::string(c.param.name); });

struct refusal {
  const char* name;
  std::function<void(tier::controls&)> set;
  int ierr;
};
class Refused : public testing::TestWithParam<refusal> {};

TEST_P(Refused, LeavesTheMatrixAndNoHierarchy) {
  sparse_system s = coupled(five_point(12), 2, 0.1);
  tier::controls c = quiet_controls();
  c.nsys = 2;
  c.nstyp = tier::approach::by_points;
  c.nint_force = tier::point_interpolation::separate;
  c.nprim = 1;
  GetParam().set(c);
  tier::hierarchy h;
  set_first_level(h, s);
  int ierr = 0;
  try {
    tier::create_levels(h, c, tier::options_of_setup(c));
  } catch (const tier::failure& e) {
    ierr = e.ierr;
  }
  EXPECT_EQ(ierr, GetParam().ierr);
  EXPECT_EQ(h.levels_created, -1);
  for (int i = 1; i <= s.n; ++i) EXPECT_EQ(s.ja[position(s.ia[position(i)])], i);
}

INSTANTIATE_TEST_SUITE_P(
    Digits, Refused,
    testing::Values(
        refusal{"Cluster", [](auto& c) { c.ncg = 45; }, 80},
        refusal{"Distances", [](auto& c) { c.nint_weights = tier::weight_source{2}; }, 30},
        refusal{"SpectralNorm", [](auto& c) { c.nint_weights = tier::weight_source{5}; }, 80},
        refusal{"PatternOfP", [](auto& c) { c.nint_pat = tier::weight_pattern{2}; }, 80},
        refusal{"CoordinatesOfPoints", [](auto& c) { c.internal = tier::primary_matrix::distances; }, 30},
        refusal{"Positions", [](auto& c) { c.internal = tier::primary_matrix::positions; }, 80},
        refusal{"TestApproach", [](auto& c) { c.internal = tier::primary_matrix::second_test; }, 80},
        refusal{"NormsVariableBased",
                [](auto& c) {
                  c.nstyp = tier::approach::by_variables;
                  c.nprim = 0;
                  c.internal = tier::primary_matrix::norms_and_sum;
                },
                50},
        refusal{"NoPrimary", [](auto& c) { c.nprim = 0; }, 50},
        refusal{"PrimaryInUnknownBased", [](auto& c) { c.nstyp = tier::approach::by_unknowns; }, 50},
        refusal{"SameForAllWithoutPrimary",
                [](auto& c) {
                  c.internal = tier::primary_matrix::norms_and_sum;
                  c.nint_force = tier::point_interpolation::same;
                  c.nprim = 0;
                },
                30},
        refusal{"JacobiOfBlocks",
                [](auto& c) {
                  c.nint_force = tier::point_interpolation::block_wise;
                  c.nwt = 11;
                },
                80}),
    [](const auto& c) { return std::string(c.param.name); });

// Each allocation fails in turn: an error in the words of the routine,
// the rows as they were, all memory back.
TEST(CreateLevels, SurvivesEveryFailedAllocation) {
  const sparse_system original = coupled(five_point(14), 2, 0.1);
  const std::int64_t integers = tier::memory().nisum, reals = tier::memory().ndsum;
  int failures = 0;
  testing::internal::CaptureStdout();
  for (bool finished = false; !finished; ++failures) {
    sparse_system s = original;
    tier::controls c = quiet_controls();
    tier::parm().mode_mess = -2;  // errors alone
    c.nsys = 2;
    c.nstyp = tier::approach::by_unknowns;
    c.ncg = 4;
    {
      tier::hierarchy h;
      set_first_level(h, s);
      tier::memory().allocations = 0;
      tier::memory().fail_at = failures;
      try {
        tier::create_levels(h, c, tier::options_of_setup(c));
        finished = true;
      } catch (const tier::failure& e) {
        EXPECT_TRUE(e.ierr == 70 || e.ierr == 60);
        EXPECT_EQ(h.levels_created, -1);
      }
      tier::memory().fail_at = -1;
      for (int i = 1; i <= s.n; ++i) ASSERT_EQ(h(1).ja[h(1).ia[i]], i) << "allocation " << failures;
    }
    ASSERT_EQ(tier::memory().nisum, integers) << "allocation " << failures;
    ASSERT_EQ(tier::memory().ndsum, reals);
  }
  EXPECT_GT(failures, 30);
  EXPECT_THAT(
      testing::internal::GetCapturedStdout(),
      testing::AllOf(testing::HasSubstr("Allocation error in (rwsrt)"),
                     testing::HasSubstr("Allocation failed for <ifg,ipatt,nflag_thread> in (pwint1_aa)"),
                     testing::HasSubstr("Allocation error (prepare_opdfn)"),
                     testing::HasSubstr("Allocation error (marker) in (opdfn_detrlen)!")));
}

/// Every F row has weights to C-variables of its own function; constants come through where rows sum to zero.
void expect_sound(const tier::hierarchy& h, bool constants, bool own_function) {
  for (int k = 1; k < h.levels_created; ++k) {
    const tier::level& lv = h(k);
    for (int i = 1; i <= lv.n; ++i) {
      if (lv.icg[i] == 0) continue;
      ASSERT_GT(lv.iw[i + 1], lv.iw[i]) << "level " << k << " row " << i;
      double sum = 0.0;
      for (int p = lv.iw[i]; p < lv.iw[i + 1]; ++p) {
        sum += lv.w[p];
        ASSERT_TRUE(!own_function || h(k + 1).iu[lv.jw[p]] == lv.iu[i]);
      }
      ASSERT_TRUE(!constants || std::abs(sum - 1.0) < 1e-9) << "level " << k << " row " << i;
    }
    for (int i = 1; i <= h(k + 1).n; ++i) ASSERT_GT(h(k + 1).a[h(k + 1).ia[i]], 0.0);
  }
}

class PointBased : public testing::TestWithParam<std::tuple<int, int, int, int>> {};

TEST_P(PointBased, PointsStayTogether) {
  const auto [nint_force, internal, nwt, ncg] = GetParam();
  sparse_system s = coupled(five_point_neumann(24), 3, 0.0);
  tier::controls c = quiet_controls();
  c.nsys = 3;
  c.nstyp = tier::approach::by_points;
  c.nint_force = tier::point_interpolation{nint_force};
  c.internal = tier::primary_matrix{internal};
  c.nprim = 2;
  c.nwt = nwt;
  c.ncg = ncg;
  tier::hierarchy h;
  set_first_level(h, s);

  tier::create_levels(h, c, tier::options_of_setup(c));

  ASSERT_GE(h.levels_created, 2) << tier::latest_setup().stop;
  expect_sound(h, true, nint_force != 3);
  EXPECT_EQ(tier::measure(h, c).b_cmplx > 1.0, internal > 0);
  for (int k = 1; k < h.levels_created; ++k) {
    const tier::level& lv = h(k);
    for (int i = 2; i <= lv.n; ++i) {
      if (lv.ip[i] != lv.ip[i - 1]) continue;
      ASSERT_EQ(lv.icg[i] > 0, lv.icg[i - 1] > 0) << "level " << k << " variable " << i;
    }
    EXPECT_EQ(h(k + 1).npnts * 3, h(k + 1).n);
    EXPECT_EQ(h(k + 1).iv[h(k + 1).npnts + 1], h(k + 1).n + 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, PointBased,
                         testing::Combine(testing::Values(1, 2, 3), testing::Values(0, 3, 4),
                                          testing::Values(1, 2, 4), testing::Values(1, 42)));

class Aggressive : public testing::TestWithParam<int> {};

TEST_P(Aggressive, CoarsensFasterAndInterpolatesAll) {
  sparse_system plain = five_point_neumann(40), fast = plain;
  tier::controls standard = quiet_controls(), aggressive = standard;
  standard.levelx = aggressive.levelx = 2;
  aggressive.ncg = GetParam();
  aggressive.nwt = 4;
  tier::hierarchy h, reference;
  set_first_level(reference, plain);
  set_first_level(h, fast);

  tier::create_levels(reference, standard, tier::options_of_setup(standard));
  tier::create_levels(h, aggressive, tier::options_of_setup(aggressive));

  EXPECT_LT(h(2).n, 0.75 * reference(2).n);
  expect_sound(h, true, false);
}

INSTANTIATE_TEST_SUITE_P(Codes, Aggressive, testing::Values(11, 12, 111002));

#ifdef _OPENMP
// In threads the split may differ; rows stay sound, the level's size about the same, runs repeat bit for bit.
TEST(CreateLevels, ThreadsGiveASoundHierarchy) {
  const sparse_system original = five_point_neumann(90);
  std::vector<int> sizes;
  std::vector<double> weights;
  for (const int threads : {1, 3, 3}) {
    sparse_system s = original;
    omp_set_num_threads(threads);
    tier::set_max_threads(1);
    tier::controls c = quiet_controls();
    tier::hierarchy h;
    set_first_level(h, s);
    tier::create_levels(h, c, tier::options_of_setup(c));
    expect_sound(h, true, false);
    sizes.push_back(h(2).n);
    const std::vector<double> now(h(1).w.data(), h(1).w.data() + h(1).w.size());
    EXPECT_TRUE(sizes.size() < 3 || now == weights);
    weights = now;
  }
  EXPECT_NEAR(sizes[1], sizes[0], 0.1 * sizes[0]);
}
#endif

int steps_of(const sparse_system& s, int threads, const std::function<void(tier::controls&)>& set) {
  test_run run(s);
  use_threads(threads);
  tier::controls c = quiet_controls();
  run.c.ncg = c.ncg;
  run.c.nptmn = c.nptmn;
  run.c.ntyp_galerkin = 2;
  set(run.c);
  tier::create_levels(run.h, run.c, tier::options_of_setup(run.c));
  run.solve();
  EXPECT_GE(run.h.levels_created, 2);
  EXPECT_LE(run.relative_residual(), 1.0000001e-8);
  return run.results.ncyc_done;
}

TEST(CreateLevels, ThreadsKeepTheNumberOfSteps) {
  for (const sparse_system& s :
       {five_point(120), five_point(120, -1.0, -0.01), random_system(6000, 6, 0.1, 3), two_faces(80)}) {
    const int serial = steps_of(s, 1, as_it_is);
    for (const int threads : {2, 4}) EXPECT_LE(steps_of(s, threads, as_it_is), std::ceil(1.2 * serial));
  }
}

struct convergence_case {
  const char* name;
  int nstyp, nint_force, internal, ncg, nwt, most_steps;
};
class Convergence : public testing::TestWithParam<convergence_case> {};

TEST_P(Convergence, WithinSteps) {
  const convergence_case& p = GetParam();
  const int steps =
      steps_of(p.nstyp == 1 ? five_point(60) : coupled(five_point(40), 2, 0.05), 1, [&](auto& c) {
        c.nstyp = tier::approach{p.nstyp};
        c.nint_force = tier::point_interpolation{p.nint_force};
        c.internal = tier::primary_matrix{p.internal};
        c.nprim = p.nstyp == 3 ? 1 : 0;
        c.ncg = p.ncg;
        c.nwt = p.nwt;
      });
  EXPECT_LE(steps, p.most_steps);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Convergence,
                         testing::Values(convergence_case{"Direct", 1, 0, 0, 1, 1, 7},
                                         convergence_case{"Standard", 1, 0, 0, 1, 2, 8},
                                         convergence_case{"Improved", 1, 0, 0, 1, 21, 8},
                                         convergence_case{"SecondPass", 1, 0, 0, 10001, 2, 8},
                                         convergence_case{"AggressiveMultipass", 1, 0, 0, 11, 4, 17},
                                         convergence_case{"AggressiveA2", 1, 0, 0, 12, 4, 11},
                                         convergence_case{"UnknownBased", 2, 0, 0, 4, 2, 8},
                                         convergence_case{"PointsSeparate", 3, 1, 0, 1, 2, 8},
                                         convergence_case{"PointsSame", 3, 2, 3, 1, 2, 8},
                                         convergence_case{"PointsSameImproved", 3, 2, 0, 1, 21, 8},
                                         convergence_case{"PointsBlocks", 3, 3, 4, 1, 2, 8},
                                         convergence_case{"BlocksMultipass", 3, 3, 0, 1, 4, 8}),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(RecomputeOperators, FollowsTheNewValues) {
  sparse_system s = five_point(30);
  tier::controls c = quiet_controls();
  tier::hierarchy h;
  set_first_level(h, s);
  tier::create_levels(h, c, tier::options_of_setup(c));
  const int last = h.levels_created;
  const double before = h(last).a[1];
  for (double& v : s.a) v *= 2.0;

  tier::recompute_operators(h, tier::options_of_operators(c));

  EXPECT_EQ(h.levels_created, last);
  EXPECT_DOUBLE_EQ(h(last).a[1], 2.0 * before);
}

}  // namespace
