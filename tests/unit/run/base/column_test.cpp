// Tables of rows 1 to n.
#include "run/base/column.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace keld {
namespace {

using testing::ElementsAre;

TEST(Column, HasRowsFromOneHoweverItIsFilled) {
  Column<int> pushed;
  EXPECT_TRUE(pushed.empty());
  EXPECT_EQ(pushed.begin(), pushed.end());
  for (const int value : {4, 5}) pushed.push_back(value);
  EXPECT_EQ(pushed[1], 4);
  EXPECT_THAT(pushed, ElementsAre(4, 5));
  EXPECT_EQ(pushed, (Column<int>{4, 5}));
  EXPECT_EQ(pushed.origin() + 1, pushed.begin());

  Column<int> sized(2, 7);
  sized.resize(3, 8);
  EXPECT_THAT(sized, ElementsAre(7, 7, 8));
  EXPECT_EQ(sized.back(), sized[sized.rows()]);
  sized.resize(0);
  EXPECT_TRUE(sized.empty());
  sized.push_back(9);
  EXPECT_THAT(sized, ElementsAre(9));
}

#ifndef NDEBUG
TEST(ColumnDeathTest, AnIndexOutsideEndsTheProgramWhereAssertionsAreOn) {
  const Column<int> three(3);
  const FixedColumn<int, 2> two{1, 2};
  for (const int row : {-1, 0, 4}) {
    EXPECT_DEATH((void)three[row], "row >= 1");
    EXPECT_DEATH((void)two[row], "row >= 1");
  }
  EXPECT_DEATH((void)Column<int>().back(), "row >= 1");
}
#endif

}  // namespace
}  // namespace keld
