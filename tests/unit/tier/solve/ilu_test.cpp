// Incomplete factorisations: exact where nothing is dropped, row sums of the modified forms, failures.
#include "tier/solve/ilu.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/tier/systems.h"
#include "tier/solve/block_ilu.h"

namespace {

using namespace testing_support;
using tier::ilu_kind;
using tier::ilu_options;

tier::level& first_level(tier::hierarchy& h, sparse_system& s) {
  set_first_level(h, s);
  return h(1);
}

/// |f - A (LU)^-1 f| / |f|
double error_of(sparse_system& s, tier::ilu_factors& factors) {
  set_known_solution(s);
  factors.solve(tier::const_vector(s.f.data()), tier::vector(s.u.data()));
  return euclidean(residual_of(s, s.u)) / euclidean(s.f);
}

// What is dropped goes by the row's own units: powers of two change no other bit.
TEST(Ilut, KeepsTheSameEntriesInOtherUnits) {
  const sparse_system original = turned_anisotropy(20, 30.0, 0.1);
  std::int64_t entries = 0;
  for (const double unit : {1.0, 0x1p20, 0x1p-33}) {
    sparse_system s = original;
    for (double& v : s.a) v *= unit;
    tier::hierarchy h;
    tier::ilu_factors factors;
    ASSERT_TRUE(factors.decompose(first_level(h, s), {ilu_kind::threshold, false, 1.0, 20, 0.02}));
    if (unit == 1.0) entries = factors.entries();
    EXPECT_EQ(factors.entries(), entries) << unit;
    EXPECT_GT(error_of(s, factors), 1e-6);  // something is dropped
  }
}

struct exact_case {
  const char* name;
  sparse_system system;
  ilu_options options;
};

TEST(Ilu, IsExactWhereNothingIsDropped) {
  std::vector<exact_case> cases{
      {"tridiagonal has no fill", line(50), {}},
      {"full fill", random_rows(80, 6, 8.0, 1), {ilu_kind::threshold, false, 1.0, 80, 0.0}},
      {"full fill with exchanges",
       random_rows(80, 6, 1e-3, 2),
       {ilu_kind::threshold_pivoting, false, 1.0, 80, 0.0}},
      {"convection", convection_diffusion(9, 40.0), {ilu_kind::threshold, false, 1.0, 81, 0.0}}};
  for (exact_case& c : cases) {
    tier::hierarchy h;
    tier::ilu_factors factors;
    ASSERT_TRUE(factors.decompose(first_level(h, c.system), c.options)) << c.name;
    EXPECT_LT(error_of(c.system, factors), 1e-9) << c.name;
  }
}

TEST(Ilu, FillAndDropLimitTheFactors) {
  sparse_system s = five_point(20);
  tier::hierarchy h;
  const tier::level& l = first_level(h, s);
  tier::ilu_factors none, few, many, dropped;
  ASSERT_TRUE(none.decompose(l, {}));
  ASSERT_TRUE(few.decompose(l, {ilu_kind::threshold, false, 1.0, 3, 0.0}));
  ASSERT_TRUE(many.decompose(l, {ilu_kind::threshold, false, 1.0, 10, 0.0}));
  ASSERT_TRUE(dropped.decompose(l, {ilu_kind::threshold, false, 1.0, 10, 0.01}));

  EXPECT_EQ(none.entries(), l.entries());
  EXPECT_LE(few.entries(), 7 * l.n);
  EXPECT_LT(dropped.entries(), many.entries());
  EXPECT_LT(error_of(s, many), error_of(s, few));
  EXPECT_LT(error_of(s, few), error_of(s, none));
  EXPECT_LT(error_of(s, dropped), 0.1);
}

// L U e = A e of the modified form, e constant: solving with A e gives e back.
TEST(Ilu, ModifiedKeepsRowSums) {
  sparse_system s = five_point(12);
  tier::hierarchy h;
  tier::ilu_factors plain, modified;
  ASSERT_TRUE(plain.decompose(first_level(h, s), {}));
  ASSERT_TRUE(modified.decompose(h(1), {ilu_kind::zero_fill, true, 1.0, 0, 0.0}));
  std::vector<double> ones(s.u.size(), 1.0);
  s.f.assign(s.f.size(), 0.0);
  std::vector<double> row_sums = residual_of(s, ones);
  for (double& x : row_sums) x = -x;
  const auto distance = [&](tier::ilu_factors& factors) {
    factors.solve(tier::const_vector(row_sums.data()), tier::vector(s.u.data()));
    double largest = 0.0;
    for (double x : s.u) largest = std::max(largest, std::abs(x - 1.0));
    return largest;
  };

  EXPECT_LT(distance(modified), 1e-12);
  EXPECT_GT(distance(plain), 1e-2);
}

TEST(Ilu, ReportsAZeroPivot) {
  sparse_system s;  // [1 1; 1 1]
  s.add_row(1.0, {{2, 1.0}});
  s.add_row(1.0, {{1, 1.0}});
  tier::hierarchy h;
  tier::ilu_factors factors;

  EXPECT_FALSE(factors.decompose(first_level(h, s), {}));
  EXPECT_FALSE(factors.decompose(h(1), {ilu_kind::threshold, false, 1.0, 2, 0.0}));
}

TEST(BlockIlu, IsExactOnABlockTridiagonalMatrix) {
  sparse_system s = coupled(line(20), 3, 0.3);
  set_known_solution(s);
  tier::hierarchy h;
  const tier::level& l = first_level(h, s);
  const tier::point_blocks points(l);
  tier::block_ilu factors;

  ASSERT_TRUE(factors.decompose(l, points, false, 1.0));
  factors.solve(l.f, l.u);

  EXPECT_LT(euclidean(residual_of(s, s.u)), 1e-12 * euclidean(s.f));
}

TEST(SmallSystem, PivotsRowsOrBoth) {
  const std::vector<double> matrix{0.0, 2.0, 1.0, 1.0, 0.0, 3.0, 4.0, 1.0, 0.0};  // x = (1, 2, 3)
  for (const bool full : {false, true}) {
    std::vector<double> a = matrix, b{7.0, 10.0, 6.0};
    int order[3];
    ASSERT_TRUE(tier::solve_small(3, a.data(), b.data(), order, full));
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(b[i], static_cast<double>(i + 1), 1e-14);
    std::vector<double> singular(9, 1.0);
    EXPECT_FALSE(tier::solve_small(3, singular.data(), b.data(), order, full));
  }
}

}  // namespace
