// Sparse Gauss elimination and its order, against explicit products.
#include "tier/solve/sparse_gauss.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "support/tier/systems.h"
#include "tier/solve/min_degree.h"

namespace {

using testing_support::position;
using testing_support::sparse_system;
using tier::sparse_gauss;
using tier::view;

class SparseGauss : public testing::TestWithParam<int> {
 protected:
  static sparse_system system() {
    switch (GetParam()) {
      case 0:
        return testing_support::five_point(1);
      case 1:
        return testing_support::five_point(7);
      case 2:
        return testing_support::five_point(60);
      case 3:
        return testing_support::random_rows(300, 8, 8.0, 1);
      case 4:
        return testing_support::random_rows(400, 6, 1e-3, 2);  // pivots come from off the diagonal
      case 5:
        return testing_support::random_rows(50, 50, 2.0, 3);
      default:
        return testing_support::coupled(testing_support::five_point(15), 3, 0.1);
    }
  }
};

TEST_P(SparseGauss, SolvesToRounding) {
  sparse_system s = system();
  for (int i = 0; i < s.n; ++i) s.f[position(i + 1)] = 1.0 + i % 7;
  const view<int> ia(s.ia.data()), ja(s.ja.data());
  sparse_gauss spg;

  spg.analyse(s.n, ia, ja);
  std::int64_t licn = spg.estimated_l(), lirn = spg.estimated_u();
  int outcome = 0, attempts = 0;
  do {
    outcome = spg.factorise(ia, ja, view<double>(s.a.data()), {}, 0.25, licn, lirn);
    licn = 2 * licn + 100;
    lirn = 2 * lirn + 100;
  } while (outcome < 0 && ++attempts < 12);
  ASSERT_EQ(outcome, sparse_gauss::done);
  spg.substitute(view<double>(s.f.data()), view<double>(s.u.data()));

  EXPECT_LT(testing_support::euclidean(testing_support::residual_of(s, s.u)), 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Systems, SparseGauss, testing::Range(0, 7));

// Leaves [1/2 .. 1] around a hub: their diagonals are half of the largest entry of their rows. Taken as
// pivots they make no fill, so that the estimates suffice; pivots in the hub's column couple all leaves.
TEST(SparseGaussPivots, LieOnTheDiagonalFromTheThresholdOn) {
  constexpr int leaves = 200;
  sparse_system s;
  std::vector<std::pair<int, double>> spokes;
  for (int i = 1; i <= leaves; ++i) {
    s.add_row(0.5, {{leaves + 1, 1.0}});
    spokes.emplace_back(i, 1.0);
  }
  s.add_row(1000.0, spokes);
  std::fill(s.f.begin(), s.f.end(), 1.0);
  const view<int> ia(s.ia.data()), ja(s.ja.data());
  for (const double stability : {0.25, 0.75}) {
    sparse_gauss spg;
    spg.analyse(s.n, ia, ja);
    const int outcome =
        spg.factorise(ia, ja, view<double>(s.a.data()), {}, stability, spg.estimated_l(), spg.estimated_u());
    ASSERT_EQ(outcome, stability < 0.5 ? sparse_gauss::done : sparse_gauss::out_of_u) << stability;
    if (outcome != sparse_gauss::done) continue;
    spg.substitute(view<double>(s.f.data()), view<double>(s.u.data()));
    EXPECT_LT(testing_support::euclidean(testing_support::residual_of(s, s.u)), 1e-11);
  }
}

TEST(MinimumDegree, OrdersAGridWithLittleFill) {
  sparse_system s = testing_support::five_point(64);
  tier::work_array<int> order, below;

  tier::minimum_degree_order(s.n, view<int>(s.ia.data()), view<int>(s.ja.data()), order, below);

  std::vector<int> seen(order.data(), order.data() + s.n);
  std::sort(seen.begin(), seen.end());
  for (int i = 1; i <= s.n; ++i) ASSERT_EQ(seen[position(i)], i);
  std::int64_t fill = 0;
  for (int k = 1; k <= s.n; ++k) fill += below[k];
  EXPECT_LT(fill, 110000);  // natural order: 64 * 4096
  EXPECT_GT(fill, 40000);
}

}  // namespace
