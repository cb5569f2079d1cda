// Whole solutions over known hierarchies, against the residuals of an independent computation.
#include "tier/solve/tier_solve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/tier/known_hierarchy.h"

namespace {

using testing_support::read_expected_residuals;
using testing_support::read_levels;
using testing_support::read_system;
using testing_support::test_run;

class KnownHierarchy : public testing::TestWithParam<const char*> {};

TEST_P(KnownHierarchy, GivesTheResidualsOfAnIndependentComputation) {
  const std::string folder = std::string(TEST_DATA) + "/tier/" + GetParam();
  test_run run(read_system(folder + "/system.txt"));
  read_levels(folder, run);
  const std::vector<double> expected = read_expected_residuals(folder);

  ASSERT_EQ(run.solve(), 0);

  ASSERT_GT(run.steps.size(), 5u);
  for (std::size_t step = 0; step < std::min<std::size_t>({run.steps.size(), expected.size(), 21}); ++step)
    EXPECT_NEAR(run.steps[step], expected[step], 1e-6 * expected[step]) << "step " << step;
  EXPECT_LE(std::abs(run.results.ncyc_done - static_cast<int>(expected.size()) + 1), 1);
  EXPECT_LE(run.relative_residual(), 1.0000001e-8);
}

INSTANTIATE_TEST_SUITE_P(Systems, KnownHierarchy,
                         testing::Values("diffusion", "turned-anisotropy", "turned-anisotropy-direct",
                                         "turned-anisotropy-extended", "wall-dome", "wall-ribbed"));

}  // namespace
