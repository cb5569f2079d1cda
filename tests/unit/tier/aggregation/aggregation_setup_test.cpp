// Calls of TIER with smoothed aggregation: steps on systems of known kinds, doors and their errors,
// re-starts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>

#include "support/tier/systems.h"
#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/store/context.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

void set(void (*setter)(const int*), int value) { setter(&value); }

tier_call by_aggregation(sparse_system system) {
  set(TIER_SET_NAGGREGATION, 1);
  tier_call call(std::move(system));
  call.matrix = 12;
  set_known_solution(call.s);
  return call;
}

/// Positions of the rows of a strip of mx x my squares, whose left side is clamped.
std::vector<double> positions_of_strip(int mx, int my) {
  std::vector<double> x;
  for (int i = 1; i <= mx; ++i)
    for (int j = 0; j <= my; ++j)
      for (int row = 0; row < 2; ++row) x.insert(x.end(), {double(i), double(j)});
  return x;
}

struct known_case {
  const char* name;
  sparse_system (*make)();
  int most_steps;
};
void PrintTo(const known_case& c, std::ostream* out) { *out << c.name; }

class AggregationSteps : public testing::TestWithParam<known_case> {};

TEST_P(AggregationSteps, StayFew) {
  tier_call call = by_aggregation(GetParam().make());

  call.run();

  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LE(call.ncyc_done, GetParam().most_steps);
  EXPECT_LT(call.relative_residual(), 1e-7);
}
INSTANTIATE_TEST_SUITE_P(Systems, AggregationSteps,
                         testing::Values(known_case{"Poisson2D", [] { return five_point(60); }, 16},
                                         known_case{"Poisson3D", [] { return seven_point(16); }, 14},
                                         known_case{"OneLevel", [] { return five_point(7); }, 2},
                                         known_case{"Functions",
                                                    [] { return coupled(five_point(24), 5, -0.01); }, 16}),
                         [](const auto& test) { return std::string(test.param.name); });

void give_positions(const tier_call& call, int mx, int my) {
  const std::vector<double> x = positions_of_strip(mx, my);
  const int dimension = 2;
  int ierr = -1;
  TIER_COORDINATES_SET(&call.s.n, &dimension, x.data(), &ierr);
  ASSERT_EQ(ierr, 0);
}

TEST(Aggregation, RigidMotionsSpareStepsOfPlaneStress) {
  tier_call with = by_aggregation(plane_stress(120, 12)), without = with;

  without.run();
  give_positions(with, 120, 12);
  with.run();

  EXPECT_EQ(with.ierr, 0) << with.said;
  EXPECT_LT(with.relative_residual(), 1e-7);
  EXPECT_LE(with.ncyc_done, 16);
  EXPECT_GE(without.ncyc_done, with.ncyc_done + 8);
}

// No coupling of the five-point formula reaches 0.9 of the diagonal: an eighth of that lets all count.
TEST(Aggregation, LowersALimitThatNothingReaches) {
  tier_call call = by_aggregation(five_point(40));
  const double limit = 0.9;
  TIER_SET_AGG_THETA(&limit);
  call.run();
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LE(call.ncyc_done, 20);
}

struct refused_case {
  const char* name;
  void (*change)(tier_call&);
  int ierr;
  const char* words;
};
void PrintTo(const refused_case& c, std::ostream* out) { *out << c.name; }

class RefusedAggregation : public testing::TestWithParam<refused_case> {};

TEST_P(RefusedAggregation, EndsWithItsNumberAndFreesAll) {
  tier_call call = by_aggregation(plane_stress(20, 4));
  GetParam().change(call);

  call.run();

  EXPECT_EQ(call.ierr, GetParam().ierr);
  EXPECT_THAT(call.said, HasSubstr(GetParam().words));
  EXPECT_EQ(tier::memory().nisum, 0);
  EXPECT_EQ(tier::memory().ndsum, 0);
}

void set_real(void (*setter)(const double*), double value) { setter(&value); }

void give_modes(int rows, int count) {
  const std::vector<double> values(static_cast<std::size_t>(rows * count), 1.0);
  int ierr = -1;
  TIER_MODES_SET(&rows, &count, values.data(), &ierr);
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, RefusedAggregation,
    testing::Values(
        refused_case{"Choice", [](tier_call&) { set(TIER_SET_NAGGREGATION, 2); }, 20, "naggregation"},
        refused_case{"NonSymmetric", [](tier_call& c) { c.matrix = 22; }, 50, "matrix"},
        refused_case{"OneLevelMethod", [](tier_call& c) { c.ncyc = 5300100; }, 50, "ncyc"},
        refused_case{"NoPoints", [](tier_call& c) { c.ndip = 1; }, 50, "ip"},
        refused_case{"Scaling", [](tier_call&) { set(TIER_SET_MODIFY_MAT, 23); }, 50, "modify_mat"},
        refused_case{"Cycle0", [](tier_call&) { set(TIER_SET_NAGG_CYCLE, 0); }, 20, "nagg_cycle"},
        refused_case{"Cycle4", [](tier_call&) { set(TIER_SET_NAGG_CYCLE, 4); }, 20, "nagg_cycle"},
        refused_case{"Degree0", [](tier_call&) { set(TIER_SET_NAGG_DEGREE, 0); }, 20, "nagg_degree"},
        refused_case{"Degree21", [](tier_call&) { set(TIER_SET_NAGG_DEGREE, 21); }, 20, "nagg_degree"},
        refused_case{"Points0", [](tier_call&) { set(TIER_SET_NAGG_POINTS, 0); }, 20, "nagg_points"},
        refused_case{"Points1001", [](tier_call&) { set(TIER_SET_NAGG_POINTS, 1001); }, 20, "nagg_points"},
        refused_case{"Repair", [](tier_call&) { set(TIER_SET_NAGG_REPAIR, -1); }, 20, "nagg_repair"},
        refused_case{"Safety", [](tier_call&) { set_real(TIER_SET_AGG_SAFETY, 0.99); }, 20, "agg_safety"},
        refused_case{"Strength0", [](tier_call&) { set(TIER_SET_NAGG_STRENGTH, 0); }, 20, "nagg_strength"},
        refused_case{"Strength3", [](tier_call&) { set(TIER_SET_NAGG_STRENGTH, 3); }, 20, "nagg_strength"},
        refused_case{"Theta", [](tier_call&) { set_real(TIER_SET_AGG_THETA, 1.0); }, 20, "agg_theta"},
        refused_case{"LongPoint",
                     [](tier_call& c) {
                       for (std::size_t i = 0; i < 13; ++i) c.s.ip[i] = 1;
                     },
                     50, "Point 1 has"},
        refused_case{"ModesOfAnother", [](tier_call&) { give_modes(10, 3); }, 50, "given for 10"},
        refused_case{"Indefinite", [](tier_call& c) { c.s.a[0] = -c.s.a[0]; }, 40, "point 1"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Aggregation, RefusesModesOutOfRange) {
  const int rows = 4, none = 0, many = 13, line = 1;
  const std::vector<double> good(52, 1.0), bad(52, std::nan(""));
  int ierr = 0;
  for (const int count : {none, many}) {
    TIER_MODES_SET(&rows, &count, good.data(), &ierr);
    EXPECT_EQ(ierr, 20) << count;
  }
  TIER_COORDINATES_SET(&rows, &line, good.data(), &ierr);
  EXPECT_EQ(ierr, 20);
  TIER_MODES_SET(&rows, &line, bad.data(), &ierr);
  EXPECT_EQ(ierr, 20);
}

/// Two copies of a system side by side, without coupling, and a row that is alone.
sparse_system two_bodies_and_a_row(const sparse_system& one) {
  sparse_system s;
  for (int copy = 0; copy < 2; ++copy)
    for (std::size_t i = 0; i < one.f.size(); ++i) {
      std::vector<std::pair<int, double>> others;
      const std::size_t first = position(one.ia[i]), end = position(one.ia[i + 1]);
      for (std::size_t k = first + 1; k < end; ++k) others.emplace_back(one.ja[k] + copy * one.n, one.a[k]);
      s.add_row(one.a[first], others);
    }
  s.add_row(3.0, {});
  return s;
}

TEST(Aggregation, SolvesSeveralBodiesAndLonelyRows) {
  tier_call call = by_aggregation(two_bodies_and_a_row(five_point(20)));

  call.run();

  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), 1e-7);
  EXPECT_NEAR(call.s.u.back(), std::sin(call.s.n), 1e-5);
  EXPECT_LE(call.ncyc_done, 16);
}

TEST(Aggregation, TakesPointsInAnyOrderAndOfUnequalLength) {
  tier_call call = by_aggregation(plane_stress(30, 6));
  const int points = call.s.n / 2;
  for (int& p : call.s.ip) p = 1 + (p * 11) % points;  // a permutation
  call.s.ip[7] = points + 1;                           // a point of one row, and one that is left with one

  call.run();

  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), 1e-7);
}

TEST(Aggregation, ReStartsOverTheKeptHierarchy) {
  tier_call call = by_aggregation(plane_stress(40, 8));
  give_positions(call, 40, 8);
  call.iswtch = 4120;
  call.run();
  ASSERT_EQ(call.ierr, 0) << call.said;
  const int steps = call.ncyc_done;

  call.iswtch = 1120;
  for (double& f : call.s.f) f *= -2.0;
  call.run();
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_EQ(call.ncyc_done, steps);

  call.iswtch = 3120;
  for (double& a : call.s.a) a *= 1e5;
  call.run();
  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_LT(call.relative_residual(), 1e-7);
  EXPECT_NEAR(call.ncyc_done, steps, 1);

  call.iswtch = 1120;
  set(TIER_SET_NAGGREGATION, 0);
  call.run();
  EXPECT_EQ(call.ierr, 53);
  EXPECT_THAT(call.said, HasSubstr("naggregation"));
}

TEST(Aggregation, EndsWithoutALeakWhereverAnAllocationFails) {
  std::int64_t failed = 0;
  for (std::int64_t at = 0;; ++at) {
    tier_call call = by_aggregation(five_point(12));
    set(TIER_SET_NAGG_POINTS, 8);
    tier::memory().allocations = 0;
    tier::memory().fail_at = at;
    call.run();
    tier::memory().fail_at = -1;
    if (call.ierr == 0) break;
    ASSERT_TRUE(call.ierr == 60 || call.ierr == 70) << at << call.said;
    ASSERT_EQ(tier::memory().nisum, 0) << at;
    ASSERT_EQ(tier::memory().ndsum, 0) << at;
    ++failed;
  }
  EXPECT_GT(failed, 60);
}

TEST(Aggregation, HasTheSameBitsWithThreeThreadsEachTime) {
  const auto solve = [](int threads) {
    omp_set_num_threads(threads);
    tier_call call = by_aggregation(five_point(150));
    call.run();
    EXPECT_EQ(call.ierr, 0) << call.said;
    return std::pair(call.ncyc_done, call.s.u);
  };
  const auto one = solve(1), three = solve(3), again = solve(3);

  EXPECT_EQ(one.first, three.first);
  EXPECT_EQ(three.second, again.second);
}

TEST(Aggregation, ReportsLevelsAndComplexities) {
  tier_call call = by_aggregation(five_point(40));
  set(TIER_SET_MODE_MESS, 0);
  call.idump = 10;
  call.iout = 20;
  call.run();

  EXPECT_THAT(call.said, HasSubstr("Smoothed aggregation: 1600 points of up to 1 variables"));
  EXPECT_THAT(call.said, HasSubstr("Basic Method: Smoothed aggregation on 3 levels (K-cycle)"));
  int levels = 0;
  double values[11];
  TIER_GET_COMPLEXITIES(&levels, values);
  EXPECT_EQ(levels, 3);
  EXPECT_GT(values[0], 1.1);
  EXPECT_LT(values[0], 1.6);
}

}  // namespace
