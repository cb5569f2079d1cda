// Second pass of a splitting, on a chain.
#include "tier/setup/second_pass.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/tier/split_search.h"

namespace {

using namespace testing_support;

// Chain of five, states C F F XF C: the sums over fine neighbours are 1, 2, 1 against limits of 2c; a change
// counts for the rows behind it. With functions, neighbours of the own one count alone, so that the sums are
// 1, 1, 0 where rows 1 to 3 have the first.
struct second_pass_case {
  double limit;
  std::vector<int> states;
  int nprim = 0;                // rows of this function alone
  std::vector<int> function{};  // of rows 0, 1, ..; none: one for all
};
class SecondPass : public testing::TestWithParam<second_pass_case> {};

TEST_P(SecondPass, SumOverFineNeighboursInRowOrder) {
  sparse_system s;
  for (int i = 1; i <= 5; ++i) {
    std::vector<std::pair<int, double>> others;
    if (i > 1) others.emplace_back(i - 1, -1.0);
    if (i < 5) others.emplace_back(i + 1, -1.0);
    s.add_row(2.0, others);
  }
  std::vector<int> state{1, -1, -1, -2, 1};
  tier::split_counts n;
  n.c = 2;
  n.f = 3;

  tier::couplings m = couplings_of(s);
  if (!GetParam().function.empty()) m.kind = tier::view<const int>(GetParam().function.data());

  const int changed =
      tier::second_pass(m, GetParam().limit, GetParam().nprim, tier::view<int>(state.data()), n);

  EXPECT_EQ(state, GetParam().states);
  EXPECT_EQ(n.c, 2 + changed);
  EXPECT_EQ(n.f, 3 - changed);
}

INSTANTIATE_TEST_SUITE_P(Limits, SecondPass,
                         testing::Values(second_pass_case{1.0, {1, -1, -1, -2, 1}},
                                         second_pass_case{0.75, {1, -1, 1, -2, 1}},
                                         second_pass_case{0.4, {1, 1, 1, -2, 1}},
                                         second_pass_case{0.4, {1, 1, -1, -2, 1}, 1, {1, 1, 1, 2, 2}},
                                         second_pass_case{0.4, {1, -1, -1, -2, 1}, 2, {1, 1, 1, 2, 2}}));

}  // namespace
