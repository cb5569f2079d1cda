// Interpolation rows by hand, and constants that all members keep.
#include "tier/setup/pwint_aa.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <string>
#include <tuple>
#include <vector>

#include "support/tier/prepared_level.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;

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
  strength.kind = tier::strong_kind::negative_else_largest;
  strength.ecg2 = 0.01;
  prepared_level p(s, states, strength);
  tier::interpolation_options o;
  o.kind = tier::interpolation_kind::direct;
  o.limits = tier::truncation{c.ntr1};
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
      o.kind = tier::interpolation_kind{nwtint};

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
  strength.kind = tier::strong_kind::negative_else_largest;
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
  o.kind = tier::interpolation_kind::extended;

  EXPECT_EQ(tier::pwint1_aa(p.lv, o, false, false), 1);

  expect_row(p.weights(3), {{2, -0.5}});
  expect_row(p.weights(4), {{4, 1.0}});
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
  o.kind = tier::interpolation_kind{nwtint};

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

}  // namespace
