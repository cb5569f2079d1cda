// First guesses.
#include "tier/call/first_guess.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

std::vector<double> guess(int ifirst) {
  std::vector<double> u(50, 7.0);
  tier::first(ifirst, 50, tier::view<double>(u.data()));
  return u;
}

TEST(FirstGuess, IsKeptZeroOrOne) {
  const std::vector<double> kept(50, 7.0), zero(50, 0.0), one(50, 1.0);
  EXPECT_EQ(guess(0), kept);
  EXPECT_EQ(guess(-13), kept);
  EXPECT_EQ(guess(4), kept);
  EXPECT_EQ(guess(1), zero);
  EXPECT_EQ(guess(25), one);
}

TEST(FirstGuess, IsRandomOfLengthOneAndFollowsItsSeed) {
  const auto u = guess(3), other = guess(35);
  EXPECT_NEAR(std::inner_product(u.begin(), u.end(), u.begin(), 0.0), 1.0, 1e-14);
  EXPECT_EQ(u, guess(30));
  EXPECT_NE(u, other);
  for (const double value : other) EXPECT_GT(value, 0.0);
}

}  // namespace
