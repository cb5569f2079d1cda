// Repair of an interpolation that gives non-positive diagonals.
#include "tier/setup/correct.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/setup/galerkin_step.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;

// P = [1 0; 0 1; -3 1.5] and A = diag(1, 1, d) with a_13 = a_31 = c: A_c(1,1) = 1 - 6c + 9d.
struct repair_case {
  const char* name;
  double w1, d, c;
  int maxop_restart;
  std::vector<double> expected;  // F row's weights afterwards; empty: ierr 100
};
class Repair : public testing::TestWithParam<repair_case> {};

TEST_P(Repair, MakesDiagonalsPositive) {
  const repair_case& c = GetParam();
  sparse_system s;
  s.add_row(1.0, {{3, c.c}});
  s.add_row(1.0, {});
  s.add_row(c.d, {{1, c.c}});
  tier::hierarchy h;
  set_first_level(h, s);
  tier::level& lv = h(1);
  lv.icg.allocate(3, 1, "icg", "test");
  lv.icg[3] = -1;
  lv.iw.allocate(4, 0, "iw", "test");
  lv.jw.allocate(4, 0, "jw", "test");
  lv.w.allocate(4, 1.0, "w", "test");
  const std::vector<int> iw{1, 2, 3, 5}, jw{1, 2, 1, 2};
  std::copy(iw.begin(), iw.end(), lv.iw.data());
  std::copy(jw.begin(), jw.end(), lv.jw.data());
  lv.w[3] = c.w1;
  lv.w[4] = 1.5;
  tier::prepare_opdfn(lv, h(2));
  tier::galerkin_options options;
  options.variant = tier::opdfn_variant::detrlen;
  options.most_repairs = c.maxop_restart;
  tier::parm().mode_mess = -3;

  int ierr = 0;
  try {
    tier::form_operator(h, 1, options);
  } catch (const tier::failure& e) {
    ierr = e.ierr;
  }

  ASSERT_EQ(ierr, c.expected.empty() ? 100 : 0);
  if (ierr != 0) return;
  ASSERT_EQ(lv.iw[4] - lv.iw[3], static_cast<int>(c.expected.size()));
  for (int k = 0; k < lv.iw[4] - lv.iw[3]; ++k)
    EXPECT_DOUBLE_EQ(lv.w[lv.iw[3] + k], c.expected[static_cast<std::size_t>(k)]);
  EXPECT_EQ(lv.rt[3] - 1, lv.iw[4] - 1) << "the transpose follows";
  for (int i = 1; i <= 2; ++i) EXPECT_GT(h(2).a[h(2).ia[i]], 0.0);
}

INSTANTIATE_TEST_SUITE_P(Cases, Repair,
                         testing::Values(repair_case{"GoodStays", -0.5, 1.0, 0.1, 2, {-0.5, 1.5}},
                                         repair_case{
                                             "NegativeWeightGoesRowSumStays", -0.5, 1.0, 1.3, 2, {1.0}},
                                         repair_case{"PositiveWeightIsHalved", 1.0, 0.1, -0.6, 2, {0.5, 1.5}},
                                         repair_case{"HalvedOften", 8.0, 0.0001, -0.9, 2, {0.5, 1.5}},
                                         repair_case{"GivesUp", 1e9, 1e-20, -0.9, 1, {}}),
                         [](const auto& c) { return std::string(c.param.name); });

}  // namespace
