// The stopping rules alone: each limit from both sides.
#include "tier/solve/stopping.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using tier::decision;
using tier::stopping_options;
using tier::stopping_rules;
using tier::view;

/// Keeps so many residuals and approximations; approximations that stand still end the run.
stopping_options of_approximations(int residuals, int approximations) {
  stopping_options o;
  o.by_residual = false;
  o.by_approximations = true;
  o.old_residuals = residuals;
  o.old_approximations = approximations;
  o.change = 0.125;
  return o;
}

TEST(StoppingRules, StagnationNeedsAllKeptResidualsWithinTheFactor) {
  struct sequence {
    std::vector<double> residuals;
    bool stagnates;
  };
  stopping_options o;
  o.old_residuals = 2;
  o.residual_spread = 1.25;  // exact in binary
  for (const auto& [residuals, stagnates] : {sequence{{1.25, 1.0, 1.0}, true},
                                             {{1.26, 1.0, 1.0}, false},
                                             {{1.0, 1.0, 1.25}, true},
                                             {{1.0, 1.0, 1.26}, false},
                                             {{1.0, 1.0}, false},
                                             {{9.0, 1.0, 1.1, 1.2}, true},
                                             {{1.0, 1.0, 1.0, 9.0}, false}}) {
    stopping_rules r(o, 1, 1e-8);
    for (const double x : residuals) r.store_residual(x);
    EXPECT_EQ(r.decide(9, residuals.back()), stagnates ? decision::stagnation : decision::go_on);
  }
}

TEST(StoppingRules, ApproximationsCountWhenAllKeptOnesAreNear) {
  struct sequence {
    std::vector<double> u, residuals;
    decision expected;
  };
  const auto near = std::vector<double>{8.0, 8.0, 8.5}, far = std::vector<double>{7.0, 8.0, 8.0};
  for (const auto& [u, residuals, expected] : {sequence{near, {1.0, 1.0, 1.0}, decision::stagnation},
                                               {near, {2.0, 3.0, 2.0}, decision::stagnation},  // oscillation
                                               {near, {3.0, 2.0, 1.0}, decision::go_on},  // still falling
                                               {near, {1.0, 2.0, 3.0}, decision::go_on},  // divergence
                                               {far, {2.0, 3.0, 2.0}, decision::go_on}}) {
    stopping_rules r(of_approximations(2, 2), 1, 1e-8);
    for (std::size_t i = 0; i < u.size(); ++i) {
      r.store_residual(residuals[i]);
      r.check_approximations(view<const double>(&u[i]));
    }
    EXPECT_EQ(r.decide(9, residuals.back()), expected) << u[0] << ' ' << residuals[0];
  }
}

TEST(StoppingRules, ApproximationsCountOnceAsManyAreKeptAsAskedFor) {
  stopping_rules r(of_approximations(2, 2), 1, 1e-8);
  for (const double x : {2.0, 3.0, 2.0}) r.store_residual(x);  // oscillation
  const double u = 8.0;
  for (const decision expected : {decision::go_on, decision::go_on, decision::stagnation}) {
    r.check_approximations(view<const double>(&u));
    EXPECT_EQ(r.decide(9, 2.0), expected);
  }
}

TEST(StoppingRules, TheTargetIsReachedByEquality) {
  stopping_options o;
  const stopping_rules r(o, 1, 0.5);
  EXPECT_TRUE(r.reached(0.5));
  EXPECT_FALSE(r.reached(0.50001));
  EXPECT_EQ(r.decide(1, 0.5), decision::converged);
  o.least_steps = 5;
  const stopping_rules late(o, 1, 0.5);
  EXPECT_EQ(late.decide(4, 0.5), decision::go_on);
  EXPECT_EQ(late.decide(5, 0.5), decision::converged);
}

TEST(StoppingRules, AllOrAnyOfTheEnabledTestsDecide) {
  for (const bool all : {true, false}) {
    stopping_options o = of_approximations(1, 1);
    o.by_residual = true;
    o.all = all;
    stopping_rules r(o, 1, 0.5);
    for (const double x : {1.0, 1.0}) {
      r.store_residual(x);
      r.check_approximations(view<const double>(&x));
    }
    EXPECT_EQ(r.decide(9, 0.5), decision::converged);
    // Residuals that stand still end a run by themselves: only new ones tell the two kinds apart.
    stopping_rules fresh(o, 1, 0.5);
    EXPECT_EQ(fresh.decide(9, 0.5), all ? decision::go_on : decision::converged);
  }
}

TEST(StoppingRules, QuasiAndRealResidualDifferFromTheFactorOn) {
  stopping_options o;
  o.quasi_ratio = 1.5;
  const stopping_rules r(o, 1, 0.5);
  for (const bool swapped : {false, true}) {
    const auto differ = [&](double x, double y) {
      return swapped ? r.quasi_differs(y, x) : r.quasi_differs(x, y);
    };
    EXPECT_TRUE(differ(1.0, 1.5));
    EXPECT_FALSE(differ(1.0, 1.49));
    EXPECT_FALSE(differ(0.0, 1e-309));
  }
}

}  // namespace
