// States of points from those of their variables.
#include "tier/setup/collect.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/tier/split_search.h"
#include "tier/setup/prepare_opdfn.h"

namespace {

using namespace testing_support;

// Four points of two unknowns; the second row of point 1 is unusable.
TEST(Collect, StatesOfPoints) {
  for (const bool force : {false, true}) {
    sparse_system s = coupled(five_point(2), 2, 0.0);
    tier::hierarchy h;
    set_first_level(h, s);
    tier::level& lv = h(1);
    tier::set_points(lv);
    lv.icg.allocate(lv.n, -1, "icg", "test");
    lv.icg[3] = 1;
    lv.ja[lv.ia[2]] = 0;

    tier::collect(lv, 1, force);

    const int first = force ? 1 : -1;
    EXPECT_EQ(states_of(lv.icg), (std::vector<int>{-2, first, first, 1, 1, -1, -1, -1, -1}));
  }
}

}  // namespace
