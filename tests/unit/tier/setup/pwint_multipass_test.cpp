// Multipass interpolation: passes along a chain, variables out of reach.
#include "tier/setup/pwint_aa.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/tier/prepared_level.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;

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
  o.kind = tier::interpolation_kind::multipass;

  const tier::multipass_counts n = tier::pwint2_aa(p.lv, o, false, false);

  EXPECT_EQ(n.attempts, 1);
  EXPECT_EQ(n.passes, 3);
  for (int i = 2; i <= 7; ++i) expect_row(p.weights(i), {{i <= 4 ? 1 : 8, 1.0}});
}

// 3 and 4 couple with each other alone: no pass reaches them. They become C up to the largest share, else FF.
// At the last attempt new C variables draw a warning; new FF ones get one attempt more, as they may spoil
// rows.
struct reach_case {
  const char* name;
  bool may_grow;
  int most_attempts, attempts, warning;
};
class OutOfReach : public testing::TestWithParam<reach_case> {};

TEST_P(OutOfReach, BecomesCoarseOrTakesNoPart) {
  const reach_case& c = GetParam();
  sparse_system s;
  s.add_row(2.0, {{2, -1.0}});
  s.add_row(2.0, {{1, -1.0}});
  s.add_row(2.0, {{4, -1.0}});
  s.add_row(2.0, {{3, -1.0}});
  prepared_level p(s, std::vector<int>{1, -1, -1, -1});
  tier::parm().mode_mess = -2;
  tier::interpolation_options o;
  o.kind = tier::interpolation_kind::multipass;
  o.largest_coarse_share = c.may_grow ? 0.75 : 0.5;
  o.most_attempts = c.most_attempts;
  tier::clear_warning();

  const tier::multipass_counts n = tier::pwint2_aa(p.lv, o, false, false);

  EXPECT_EQ(n.attempts, c.attempts);
  EXPECT_EQ(n.turned_c, c.may_grow ? 2 : 0);
  EXPECT_EQ(n.turned_ff, c.may_grow ? 0 : 2);
  expect_row(p.weights(2), {{1, 0.5}});
  expect_row(p.weights(3), c.may_grow ? row{{3, 1.0}} : row{});
  EXPECT_EQ(p.lv.icg[4], c.may_grow ? 1 : 0);
  EXPECT_EQ(tier::last_warning(), c.warning);
}

INSTANTIATE_TEST_SUITE_P(Cases, OutOfReach,
                         testing::Values(reach_case{"Coarse", true, 3, 2, 0},
                                         reach_case{"CoarseAtTheLastAttempt", true, 1, 1, -140},
                                         reach_case{"NoPart", false, 3, 2, 0},
                                         reach_case{"NoPartAtTheLastAttempt", false, 1, 2, 0}),
                         [](const auto& i) { return i.param.name; });

}  // namespace
