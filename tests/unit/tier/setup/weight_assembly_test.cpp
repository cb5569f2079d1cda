// Rows of a primary unknown copied to the others.
#include "tier/setup/weight_assembly.h"

#include <gtest/gtest.h>

#include "support/tier/prepared_level.h"
#include "tier/setup/pwint_aa.h"

namespace {

using namespace testing_support;

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

}  // namespace
