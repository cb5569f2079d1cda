// The stopping rules alone: each limit from both sides.
#include "tier/solve/stopping.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "tier/store/parameters.h"

namespace {

using tier::controls;
using tier::decision;
using tier::parm;
using tier::stopping_rules;
using tier::view;

controls rules(int residuals, int approximations, std::array<int, 4> digits) {
  controls c;
  c.num_old_res = residuals;
  c.num_old_apps = approximations;
  for (std::size_t i = 0; i < 4; ++i) c.icrits[i + 1] = digits[i];
  return c;
}

TEST(StoppingRules, StagnationNeedsAllKeptResidualsWithinTheFactor) {
  struct sequence {
    std::vector<double> residuals;
    bool stagnates;
  };
  parm().factor_res_var = 1.25;  // exact in binary
  for (const auto& [residuals, stagnates] : {sequence{{1.25, 1.0, 1.0}, true},
                                             {{1.26, 1.0, 1.0}, false},
                                             {{1.0, 1.0, 1.25}, true},
                                             {{1.0, 1.0, 1.26}, false},
                                             {{1.0, 1.0}, false},
                                             {{9.0, 1.0, 1.1, 1.2}, true},
                                             {{1.0, 1.0, 1.0, 9.0}, false}}) {
    const controls c = rules(2, 0, {1, 1, 0, 0});
    stopping_rules r(c, 1, 1e-8);
    for (const double x : residuals) r.store_residual(x);
    EXPECT_EQ(r.decide(9, residuals.back()), stagnates ? decision::stagnation : decision::go_on);
  }
}

TEST(StoppingRules, ApproximationsCountWhenAllKeptOnesAreNear) {
  struct sequence {
    std::vector<double> u, residuals;
    decision expected;
  };
  parm().factor_app_var = 0.125;
  const auto near = std::vector<double>{8.0, 8.0, 8.5}, far = std::vector<double>{7.0, 8.0, 8.0};
  for (const auto& [u, residuals, expected] : {sequence{near, {1.0, 1.0, 1.0}, decision::stagnation},
                                               {near, {2.0, 3.0, 2.0}, decision::stagnation},  // oscillation
                                               {near, {3.0, 2.0, 1.0}, decision::go_on},  // still falling
                                               {near, {1.0, 2.0, 3.0}, decision::go_on},  // divergence
                                               {far, {2.0, 3.0, 2.0}, decision::go_on}}) {
    const controls c = rules(2, 2, {1, 0, 1, 0});
    stopping_rules r(c, 1, 1e-8);
    for (std::size_t i = 0; i < u.size(); ++i) {
      r.store_residual(residuals[i]);
      r.check_approximations(view<const double>(&u[i]));
    }
    EXPECT_EQ(r.decide(9, residuals.back()), expected) << u[0] << ' ' << residuals[0];
  }
}

TEST(StoppingRules, ApproximationsCountOnceAsManyAreKeptAsAskedFor) {
  parm().factor_app_var = 0.125;
  const controls c = rules(2, 2, {1, 0, 1, 0});
  stopping_rules r(c, 1, 1e-8);
  for (const double x : {2.0, 3.0, 2.0}) r.store_residual(x);  // oscillation
  const double u = 8.0;
  for (const decision expected : {decision::go_on, decision::go_on, decision::stagnation}) {
    r.check_approximations(view<const double>(&u));
    EXPECT_EQ(r.decide(9, 2.0), expected);
  }
}

TEST(StoppingRules, TheTargetIsReachedByEquality) {
  const controls c = rules(0, 0, {1, 1, 0, 0});
  const stopping_rules r(c, 1, 0.5);
  EXPECT_TRUE(r.reached(0.5));
  EXPECT_FALSE(r.reached(0.50001));
  EXPECT_EQ(r.decide(1, 0.5), decision::converged);
  parm().ncyc_min = 5;
  EXPECT_EQ(r.decide(4, 0.5), decision::go_on);
  EXPECT_EQ(r.decide(5, 0.5), decision::converged);
}

TEST(StoppingRules, AllOrAnyOfTheEnabledTestsDecide) {
  parm().factor_app_var = 0.125;
  for (const int kind : {1, 2}) {  // all, any
    const controls c = rules(1, 1, {kind, 1, 1, 0});
    stopping_rules r(c, 1, 0.5);
    for (const double x : {1.0, 1.0}) {
      r.store_residual(x);
      r.check_approximations(view<const double>(&x));
    }
    EXPECT_EQ(r.decide(9, 0.5), decision::converged);
    // Residuals that stand still end a run by themselves: only new ones tell the two kinds apart.
    stopping_rules fresh(c, 1, 0.5);
    EXPECT_EQ(fresh.decide(9, 0.5), kind == 1 ? decision::go_on : decision::converged);
  }
}

TEST(StoppingRules, QuasiAndRealResidualDifferFromTheFactorOn) {
  const controls c;
  const stopping_rules r(c, 1, 0.5);
  parm().factor_quasi_res = 1.5;
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
