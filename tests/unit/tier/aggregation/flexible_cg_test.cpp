// Conjugate gradients over aggregates where the preconditioner or the matrix isn't positive.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "support/tier/systems.h"
#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/call/solver_state.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

tier_call by_aggregation(sparse_system system, int cycle) {
  const int chosen = 1;
  TIER_SET_NAGGREGATION(&chosen);
  TIER_SET_NAGG_CYCLE(&cycle);
  tier_call call(std::move(system));
  call.matrix = 12;
  set_known_solution(call.s);
  return call;
}

/// A kept hierarchy whose eigenvalue estimates are taken as this share of what they are.
tier_call with_smaller_bounds(double share, int cycle) {
  tier_call call = by_aggregation(five_point(60), cycle);
  call.iswtch = 4120;
  call.run();
  tier::solver().aggregates.fine.lambda *= share;
  for (auto& level : tier::solver().aggregates.coarse) level.lambda *= share;
  call.iswtch = 1120;
  call.iout = 0;
  return call;
}

struct small_bounds {
  const char* name;
  double share;
  int cycle;
  int restarts;  // as many as bring the bounds, safety 1.1 included, back to the spectrum by factors of 1.5
};
void PrintTo(const small_bounds& b, std::ostream* out) { *out << b.name; }

class SmallBounds : public testing::TestWithParam<small_bounds> {};

TEST_P(SmallBounds, AreWidenedUntilThePreconditionerIsPositive) {
  const small_bounds& b = GetParam();
  tier_call call = with_smaller_bounds(b.share, b.cycle);

  call.run();

  EXPECT_EQ(call.ierr, -830) << call.said;
  EXPECT_LT(call.relative_residual(), 1.1e-8);
  EXPECT_LE(call.ncyc_done, 14);
  EXPECT_THAT(call.said, HasSubstr("restarts of CG with wider bounds:  " + std::to_string(b.restarts)));
  EXPECT_NEAR(tier::solver().aggregates.widening, std::pow(1.5, b.restarts), 1e-9);

  call.run();  // the wider bounds are kept

  EXPECT_EQ(call.ierr, 0) << call.said;
  EXPECT_THAT(call.said, testing::Not(HasSubstr("restarts")));
}
INSTANTIATE_TEST_SUITE_P(Cycles, SmallBounds,
                         testing::Values(small_bounds{"V", 0.7, 1, 1}, small_bounds{"K", 0.7, 3, 1},
                                         small_bounds{"KByThree", 0.3, 3, 3},
                                         small_bounds{"KByTen", 0.1, 3, 6},
                                         small_bounds{"WOverflows", 0.03, 2, 9}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Aggregation, EndsWhereWiderBoundsDoNotHelp) {
  tier_call call = with_smaller_bounds(1e-3, 3);

  call.run();

  EXPECT_EQ(call.ierr, 830);
  EXPECT_THAT(call.said, HasSubstr("too many restarts"));
}

// The least eigenvalue of the star is 8 sin^2(pi / 2 (m + 1)). A shift just above it leaves the coarse
// levels positive, a larger one doesn't.
TEST(Aggregation, RefusesMatricesThatAreNotDefinite) {
  constexpr int m = 30;
  const double least = 8.0 * std::pow(std::sin(std::numbers::pi / (2.0 * (m + 1))), 2);
  const auto shifted = [=](double times) {
    tier_call call = by_aggregation(five_point(m), 3);
    for (std::size_t i = 0; i < call.s.f.size(); ++i) call.s.a[position(call.s.ia[i])] -= times * least;
    call.run();
    return call;
  };
  EXPECT_EQ(shifted(0.9).ierr, 0);
  EXPECT_THAT(shifted(1.02).said, HasSubstr("Given matrix is not positive definite"));
  EXPECT_THAT(shifted(2.0).said, HasSubstr("The matrix of the last level isn't positive definite"));
  EXPECT_EQ(shifted(2.0).ierr, 980);
}

}  // namespace
