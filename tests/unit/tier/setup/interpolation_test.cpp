// Interpolation: rows by hand, constants, multipass, improvement, points and blocks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <cmath>

#include "support/tier/sparse_system.h"
#include "tier/setup/pbint.h"
#include "tier/setup/pcol.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/pwint_aa.h"
#include "tier/setup/rwsrt.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/parameters.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;

using row = std::vector<std::pair<int, double>>;  // column, weight

/// A level with sorted rows and given states.
struct prepared_level {
  sparse_system s;
  tier::hierarchy h;
  tier::level& lv = h(1);

  prepared_level(sparse_system system, const tier::strength_options& o) : s(std::move(system)) {
    set_first_level(h, s);
    tier::rwsrt(tier::couplings_of(lv, s.nsys > 1), o);
    lv.icg.allocate(lv.n, "icg", "test");
    if (s.nsys > 1) tier::set_points(lv);
  }
  prepared_level(sparse_system system, const std::vector<int>& states,
                 const tier::strength_options& o = tier::strength_options())
      : prepared_level(std::move(system), o) {
    for (int i = 1; i <= lv.n; ++i) lv.icg[i] = states[static_cast<std::size_t>(i) - 1];
  }
  void split() { tier::pcol(tier::couplings_of(lv, s.nsys > 1), {}, lv.icg); }
  row weights(int i) const {
    row r;
    for (int p = lv.iw[i]; p < lv.iw[i + 1]; ++p) r.emplace_back(lv.jw[p], lv.w[p]);
    return r;
  }
  double row_sum(int i) const {
    double sum = 0.0;
    for (const auto& [column, w] : weights(i)) sum += w;
    return sum;
  }
};

void expect_row(const row& actual, const row& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t k = 0; k < actual.size(); ++k) {
    EXPECT_EQ(actual[k].first, expected[k].first);
    EXPECT_NEAR(actual[k].second, expected[k].second, 1e-14);
  }
}

/// Row 1 of an F variable among C-variables 2, 3, ...; expected weights, empty: row 1 becomes C.
struct row_case {
  const char* name;
  double diagonal;
  std::vector<double> values;
  row expected;
  int ntr1 = 1;
  double etr = 0.2;
  bool unit_row_sum = false;
};

class DirectRow : public testing::TestWithParam<row_case> {};

TEST_P(DirectRow, WeightsByHand) {
  const row_case& c = GetParam();
  sparse_system s;
  std::vector<std::pair<int, double>> others;
  for (std::size_t k = 0; k < c.values.size(); ++k) others.emplace_back(static_cast<int>(k) + 2, c.values[k]);
  const int n = static_cast<int>(c.values.size()) + 1;
  s.add_row(c.diagonal, others);
  for (int i = 2; i <= n; ++i) s.add_row(1.0, {});
  std::vector<int> states(static_cast<std::size_t>(n), 1);
  states[0] = -1;
  tier::strength_options strength;
  strength.ncgtyp = 2;
  strength.ecg2 = 0.01;
  prepared_level p(s, states, strength);
  tier::interpolation_options o;
  o.nwtint = 1;
  o.ntr1 = c.ntr1;
  o.etr = c.etr;
  o.unit_row_sum = c.unit_row_sum;

  const int turned = tier::pwint1_aa(p.lv, o, false, false);

  expect_row(p.weights(1), c.expected.empty() ? row{{1, 1.0}} : c.expected);
  EXPECT_EQ(turned, c.expected.empty() ? 1 : 0);
  EXPECT_EQ(p.lv.icg[1], c.expected.empty() ? 1 : -1);
}

// Strong are the negative ones, at 0.01 of the largest.
INSTANTIATE_TEST_SUITE_P(
    Rows, DirectRow,
    testing::Values(row_case{"NegativeOnly", 4.0, {-1, -1}, {{2, 0.25}, {3, 0.25}}},
                    row_case{"PositiveGoesToTheDiagonal", 4.0, {-2, 1}, {{2, 0.4}}},
                    row_case{"OnlyPositiveInterpolates", 4.0, {2, 2}, {{2, -0.5}, {3, -0.5}}},
                    row_case{
                        "AtTheLimitStays", 2.2, {-1, -0.2, -1}, {{2, 1 / 2.2}, {3, 0.2 / 2.2}, {4, 1 / 2.2}}},
                    row_case{"BelowGoesAndIsMadeUp", 2.19, {-1, -0.19, -1}, {{2, 0.5}, {4, 0.5}}},
                    row_case{"NoTruncation", 2.0, {-1, -0.1}, {{2, 0.5}, {3, 0.05}}, 0},
                    row_case{"UnitRowSum", 8.0, {-1, -1}, {{2, 0.5}, {3, 0.5}}, 1, 0.2, true}),
    [](const auto& c) { return std::string(c.param.name); });

// F variable 1 has strong neighbours 2, 3 (F) alone; elimination reaches C-variables 4 and 5:
//   2 e1 = e2 + e3, 2 e2 = e1 + e4, 2 e3 = e1 + e5  =>  e1 = (e4 + e5) / 2
// Without couplings of 2 and 3 to C there is nothing left and 1 becomes C.
TEST(Pwint1, EliminatesStrongFineNeighbours) {
  for (const bool reaches : {true, false}) {
    for (const int nwtint : {1, 2, 3}) {
      sparse_system s;
      s.add_row(2.0, {{2, -1.0}, {3, -1.0}});
      s.add_row(2.0, reaches ? row{{1, -1.0}, {4, -1.0}} : row{{1, -1.0}});
      s.add_row(2.0, reaches ? row{{1, -1.0}, {5, -1.0}} : row{{1, -1.0}});
      s.add_row(1.0, {});
      s.add_row(1.0, {});
      prepared_level p(s, std::vector{-1, -1, -1, 1, 1});
      tier::interpolation_options o;
      o.nwtint = nwtint;

      tier::pwint1_aa(p.lv, o, false, false);

      expect_row(p.weights(1), reaches ? row{{4, 0.5}, {5, 0.5}} : row{{1, 1.0}});
      EXPECT_EQ(p.lv.icg[1], reaches ? -1 : 1);
      if (!reaches) expect_row(p.weights(2), {{1, 0.5}});  // sees 1 as C at once
    }
  }
}

// Elimination of 3 brings +1 to C-variable 4 beside -1 at 2: the weights 1/4 and -1/4 can't be scaled to 1.
TEST(Pwint1, ReportsARowSumOfZero) {
  sparse_system s;
  s.add_row(4.0, {{2, -1.0}, {3, -1.0}});
  s.add_row(1.0, {});
  s.add_row(1.0, {{4, 1.0}});
  s.add_row(1.0, {});
  tier::strength_options strength;
  strength.ncgtyp = 2;
  prepared_level p(s, std::vector{-1, 1, -1, 1}, strength);
  tier::interpolation_options o;
  o.unit_row_sum = true;
  testing::internal::CaptureStdout();

  tier::pwint1_aa(p.lv, o, false, false);

  expect_row(p.weights(1), {{2, 0.25}, {4, -0.25}});
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("wrowsum=0 in rows: 1"));
}

// Row 3 has a positive coupling alone, to C-variable 1, which couples strongly with C-variable 2:
//   2 e3 + e1 = 0, e1 - e2 = 0  =>  e3 = -e2 / 2; row 4 has no coupling at all.
TEST(Pwint1, ExtendsRowsWithoutStrongCouplings) {
  sparse_system s;
  s.add_row(1.0, {{2, -1.0}});
  s.add_row(1.0, {});
  s.add_row(2.0, {{1, 1.0}});
  s.add_row(1.0, {});
  prepared_level p(s, std::vector{1, 1, -1, -1});
  tier::interpolation_options o;
  o.nwtint = 3;

  EXPECT_EQ(tier::pwint1_aa(p.lv, o, false, false), 1);

  expect_row(p.weights(3), {{2, -0.5}});
  expect_row(p.weights(4), {{4, 1.0}});
}

// Chain 1 .. 8 with C at 1 and 8: pass 1 reaches 2 and 7, pass 2 reaches 3 and 6, pass 3 reaches 4 and 5.
// Away from C each takes its neighbour's row: 2 e3 = e2 + e4 with e4 lumped by scaling.
TEST(Pwint2, PassesReachTheMiddleOfAChain) {
  sparse_system s;
  for (int i = 1; i <= 8; ++i) {
    row others;
    if (i > 1) others.emplace_back(i - 1, -1.0);
    if (i < 8) others.emplace_back(i + 1, -1.0);
    s.add_row(2.0, others);
  }
  prepared_level p(s, std::vector<int>{1, -1, -1, -1, -1, -1, -1, 1});
  tier::interpolation_options o;
  o.nwtint = 4;

  const tier::multipass_counts n = tier::pwint2_aa(p.lv, o, false, false);

  EXPECT_EQ(n.attempts, 1);
  EXPECT_EQ(n.passes, 3);
  for (int i = 2; i <= 7; ++i) expect_row(p.weights(i), {{i <= 4 ? 1 : 8, 1.0}});
}

// 3 and 4 couple with each other alone: no pass reaches them. They become C below gmax_multipass, else FF.
TEST(Pwint2, VariablesOutOfReach) {
  for (const bool may_grow : {true, false}) {
    sparse_system s;
    s.add_row(2.0, {{2, -1.0}});
    s.add_row(2.0, {{1, -1.0}});
    s.add_row(2.0, {{4, -1.0}});
    s.add_row(2.0, {{3, -1.0}});
    prepared_level p(s, std::vector<int>{1, -1, -1, -1});
    tier::parm().gmax_multipass = may_grow ? 0.75 : 0.5;
    tier::parm().mode_mess = -2;
    tier::interpolation_options o;
    o.nwtint = 4;

    const tier::multipass_counts n = tier::pwint2_aa(p.lv, o, false, false);

    EXPECT_EQ(n.attempts, 2);
    EXPECT_EQ(n.turned_c, may_grow ? 2 : 0);
    EXPECT_EQ(n.turned_ff, may_grow ? 0 : 2);
    expect_row(p.weights(3), may_grow ? row{{3, 1.0}} : row{});
    EXPECT_EQ(p.lv.icg[4], may_grow ? 1 : 0);
  }
}

// F rows 2 and 3 between C 1 and 4, direct weights first: e2 = e1, e3 = e4 (scaled). One improvement puts
// e3's row in place of its coupling: 2 e2 = e1 + e4.
TEST(Pwiter, ReplacesFineNeighboursByTheirRows) {
  sparse_system s;
  s.add_row(2.0, {{2, -1.0}});
  s.add_row(2.0, {{1, -1.0}, {3, -1.0}});
  s.add_row(2.0, {{2, -1.0}, {4, -1.0}});
  s.add_row(2.0, {{3, -1.0}});
  prepared_level p(s, std::vector<int>{1, -1, -1, 1});
  tier::interpolation_options o;
  o.nwtint = 1;
  tier::pwint1_aa(p.lv, o, false, false);
  expect_row(p.weights(2), {{1, 1.0}});

  tier::pwiter(p.lv, o, false, false);

  expect_row(p.weights(2), {{1, 0.5}, {4, 0.5}});
  expect_row(p.weights(3), {{4, 0.5}, {1, 0.5}});
}

class Constants : public testing::TestWithParam<std::tuple<int, int, int>> {};

// Where the rows of A sum to zero every F row sums to one; threads give the rows of one thread.
TEST_P(Constants, AreInterpolatedExactly) {
  const auto [nwtint, improvements, threads] = GetParam();
#ifdef _OPENMP
  omp_set_num_threads(threads);
#endif
  tier::set_max_threads(1);
  prepared_level p(five_point_neumann(40), tier::strength_options{});
  p.split();
  tier::interpolation_options o;
  o.nwtint = nwtint;

  if (nwtint == 4) {
    tier::pwint2_aa(p.lv, o, false, false);
  } else {
    tier::pwint1_aa(p.lv, o, false, false);
  }
  for (int step = 0; step < improvements; ++step) tier::pwiter(p.lv, o, false, false);

  int fine = 0;
  for (int i = 1; i <= p.lv.n; ++i) {
    ASSERT_NEAR(p.row_sum(i), 1.0, 1e-13) << i;
    fine += p.lv.icg[i] < 0;
    for (const auto& [column, w] : p.weights(i)) ASSERT_GT(p.lv.icg[column], 0);
  }
  EXPECT_GT(fine, 100);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Constants,
                         testing::Combine(testing::Values(1, 2, 3, 4), testing::Values(0, 2),
                                          testing::Values(1, 3)));

// Every weight of a primary unknown's row comes back in the other unknown's row of the point.
TEST(Pwforce, CopiesThePrimaryRows) {
  prepared_level p(coupled(five_point(12), 2, 0.0), tier::strength_options{});
  p.split();
  for (int i = 2; i <= p.lv.n; i += 2) p.lv.icg[i] = p.lv.icg[i - 1];
  tier::interpolation_options o;
  o.nprim = 1;
  tier::pwint1_aa(p.lv, o, true, true);

  tier::pwforce(p.lv, 1);

  for (int i = 1; i <= p.lv.n; i += 2) {
    row expected = p.weights(i);
    ASSERT_FALSE(expected.empty());
    for (auto& [column, w] : expected) ++column;
    expect_row(p.weights(i + 1), expected);
  }
}

// Points 1 (F), 2, 3 (C), 4 (weak), two unknowns: w_j = -s D^-1 A_1j with s = (3 norms) / (2 kept norms).
TEST(Pbint1, SolvesTheDiagonalBlock) {
  sparse_system s;
  s.nsys = 2;
  s.add_row(4.0, {{2, 1.0}, {3, -2.0}, {5, -2.0}, {7, -0.1}});
  s.add_row(3.0, {{1, 1.0}, {4, -2.0}, {6, -2.0}, {8, -0.1}});
  for (int i = 3; i <= 8; ++i) s.add_row(1.0, {});
  s.iu = {1, 2, 1, 2, 1, 2, 1, 2};
  s.ip = {1, 1, 2, 2, 3, 3, 4, 4};
  for (const int nwtint : {1, 4}) {
    prepared_level p(s, std::vector<int>{-1, -1, 1, 1, 1, 1, 1, 1});
    tier::block_options o;
    o.nprim = 1;
    o.nwtint = nwtint;

    EXPECT_EQ(nwtint == 4 ? tier::pbint2(p.lv, o) : tier::pbint1(p.lv, o), 0);

    const double f = 4.1 / 4.0 * 2.0 / 11.0;  // inverse of [4 1; 1 3] is [3 -1; -1 4] / 11
    expect_row(p.weights(1), {{3, 3 * f}, {4, -f}, {5, 3 * f}, {6, -f}});
    expect_row(p.weights(2), {{3, -f}, {4, 4 * f}, {5, -f}, {6, 4 * f}});
  }
}

// A diagonal system in each unknown gives what the scalar interpolation gives, elimination included, when
// every row is the same for both unknowns.
TEST(Pbint1, EliminatesAsScalarRowsDo) {
  sparse_system scalar;
  scalar.add_row(2.0, {{2, -1.0}, {3, -1.0}});
  scalar.add_row(2.0, {{1, -1.0}, {4, -1.0}});
  scalar.add_row(2.0, {{1, -1.0}, {5, -1.0}});
  scalar.add_row(1.0, {});
  scalar.add_row(1.0, {});
  prepared_level p(coupled(scalar, 2, 0.0), std::vector<int>{-1, -1, -1, -1, -1, -1, 1, 1, 1, 1});
  tier::block_options o;
  o.nprim = 1;
  o.nwtint = 2;

  tier::pbint1(p.lv, o);

  expect_row(p.weights(1), {{7, 0.5}, {8, 0.0}, {9, 0.5}, {10, 0.0}});
  expect_row(p.weights(2), {{7, 0.0}, {8, 0.5}, {9, 0.0}, {10, 0.5}});
}

}  // namespace
