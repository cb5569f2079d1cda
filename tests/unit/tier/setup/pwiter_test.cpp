// Improvement of interpolation rows.
#include "tier/setup/pwint_aa.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/tier/prepared_level.h"

namespace {

using namespace testing_support;

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
  o.kind = tier::interpolation_kind::direct;
  tier::pwint1_aa(p.lv, o, false, false);
  expect_row(p.weights(2), {{1, 1.0}});

  tier::pwiter(p.lv, o, false, false);

  expect_row(p.weights(2), {{1, 0.5}, {4, 0.5}});
  expect_row(p.weights(3), {{4, 0.5}, {1, 0.5}});
}

}  // namespace
