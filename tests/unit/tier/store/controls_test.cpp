// Digit codes.
#include "tier/store/controls.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <climits>
#include <vector>

namespace {

struct Split {
  int value, nnum;
  std::vector<int> fields;
  int ndigit;
};

class Idec : public testing::TestWithParam<Split> {};

TEST_P(Idec, SplitsFromTheLeft) {
  const Split& c = GetParam();
  std::vector<int> digits(static_cast<std::size_t>(c.nnum), -7);
  int ndigit = -1;

  tier::idec(c.value, c.nnum, ndigit, digits.data());

  EXPECT_EQ(digits, c.fields);
  EXPECT_EQ(ndigit, c.ndigit);
}

INSTANTIATE_TEST_SUITE_P(Codes, Idec,
                         testing::Values(Split{21, 4, {2, 1, 0, 0}, 2}, Split{5120, 4, {5, 1, 2, 0}, 4},
                                         Split{1300250, 4, {1, 3, 0, 250}, 7}, Split{-12, 2, {1, 2}, 2},
                                         Split{0, 3, {0, 0, 0}, 1}, Split{77, 1, {77}, 2},
                                         Split{123456789, 9, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 9},
                                         Split{1234567890, 9, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 9},
                                         Split{INT_MIN, 2, {2, 14748364}, 9}));

TEST(IdecDeath, StopsOnAFieldCountOutOfRange) {
  int ndigit, digits[10];
  for (const int nnum : {0, 10})  // what stops the process speaks on standard output
    EXPECT_EXIT((dup2(2, 1), tier::idec(1, nnum, ndigit, digits)), testing::ExitedWithCode(1),
                "Illegal use of routine idec: <nnum> out of range!\n>>> Emergency STOP! <<<");
}

}  // namespace
