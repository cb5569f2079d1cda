// The primary matrix of points: norms of the blocks between them.
#include "tier/setup/primary.h"

#include <gtest/gtest.h>

#include "support/tier/sparse_system.h"
#include "tier/setup/prepare_opdfn.h"

namespace {

struct norm_case {
  const char* name;
  int norm;
  double first, second;  // of the block (1, 2) and of (2, 1)
};

class PrimaryMatrix : public testing::TestWithParam<norm_case> {};

// Two points of two variables; block (1, 2) is [3 4; 0 0], block (2, 1) is [-6 0; 0 8].
TEST_P(PrimaryMatrix, HoldsNormsOfBlocks) {
  testing_support::sparse_system s;
  s.nsys = 2;
  s.add_row(20.0, {{3, 3.0}, {4, 4.0}});
  s.add_row(20.0, {});
  s.add_row(20.0, {{1, -6.0}});
  s.add_row(20.0, {{2, 8.0}});
  s.iu = {1, 2, 1, 2};
  s.ip = {1, 1, 2, 2};
  tier::hierarchy h;
  testing_support::set_first_level(h, s);
  tier::level& lv = h(1);
  lv.npnts = 2;
  tier::set_points(lv);
  tier::primary_options o;
  o.norm = tier::block_norm_kind{GetParam().norm};

  tier::build_primary_matrix(lv, o);

  ASSERT_EQ(lv.ib[3], 5);  // two rows of two entries
  for (const auto& [point, norm] : {std::pair{1, GetParam().first}, {2, GetParam().second}}) {
    EXPECT_DOUBLE_EQ(lv.b[lv.ib[point]], norm) << "the diagonal is the sum of the others";
    EXPECT_DOUBLE_EQ(lv.b[lv.ib[point] + 1], -norm);
    EXPECT_EQ(lv.jb[lv.ib[point] + 1], 3 - point);
  }
}

INSTANTIATE_TEST_SUITE_P(Norms, PrimaryMatrix,
                         testing::Values(norm_case{"Frobenius", 0, 5.0, 10.0},
                                         norm_case{"RowSum", 1, 7.0, 8.0},
                                         norm_case{"LargestEntry", 2, 4.0, 8.0}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
