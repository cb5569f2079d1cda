// First guesses of systems that are scaled while they are solved.
#include "tier/call/level_one.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/tier/tier_call.h"
#include "tier/store/parameters.h"

namespace {

// The unknowns of columns that are divided by c are multiplied by c: a guess that solves the caller's system
// solves the scaled one, so that the least number of cycles is all it takes.
TEST(LevelOne, ScalesTheFirstGuessWithItsColumns) {
  testing_support::tier_call call = testing_support::poisson_call();
  for (std::size_t i = 0; i < call.s.ja.size(); ++i) call.s.a[i] *= std::pow(10.0, call.s.ja[i] % 4);
  tier::parm().modify_mat = 3;
  tier::parm().nptmn = 10;
  call.ncyc = 1300200;
  call.eps = -1e-9;
  call.run();
  ASSERT_EQ(call.ierr, 0) << call.said;
  ASSERT_GT(call.ncyc_done, 1);

  call.ifirst = 0;
  call.eps = -1e-7;
  tier::parm().ncyc_min = 1;
  call.run();

  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_EQ(call.ncyc_done, 1);
}

}  // namespace
