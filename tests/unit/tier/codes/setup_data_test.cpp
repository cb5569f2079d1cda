// Thresholds of two numbers in one, and values that set-up refuses.
#include "tier/codes/setup_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace {

struct threshold_case {
  double value, first, second;
};
class Thresholds : public testing::TestWithParam<threshold_case> {};
TEST_P(Thresholds, TwoNumbersInOne) {
  const tier::threshold_pair p = tier::decode_thresholds(GetParam().value);
  EXPECT_NEAR(p.first, GetParam().first, 1e-15);
  EXPECT_NEAR(p.second, GetParam().second, 1e-14);
}
INSTANTIATE_TEST_SUITE_P(Values, Thresholds,
                         testing::Values(threshold_case{21.25, 0.01, 0.25}, threshold_case{12.2, 0.2, 0.2},
                                         threshold_case{0.2, 0.0, 0.2}, threshold_case{1.5, 1.0, 0.5},
                                         threshold_case{315.0, 0.015, 0.0}, threshold_case{0.0, 0.0, 0.0}));

struct illegal_case {
  const char* name;
  double ecg, ewt;
  int ncg, nwt;
};
class IllegalSetup : public testing::TestWithParam<illegal_case> {};
TEST_P(IllegalSetup, NamesTheParameter) {
  tier::controls c;
  c.ecg = GetParam().ecg;
  c.ewt = GetParam().ewt;
  c.ncg = GetParam().ncg;
  c.nwt = GetParam().nwt;
  tier::reset_parameters();
  testing::internal::CaptureStdout();
  try {
    tier::options_of_setup(c);
    ADD_FAILURE() << "no error";
  } catch (const tier::failure& e) {
    EXPECT_EQ(e.ierr, 20);
  }
  fflush(stdout);
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::HasSubstr(std::string("Illegal value of parameter <") + GetParam().name +
                                 "> in (crsng_data)!"));
}
INSTANTIATE_TEST_SUITE_P(
    Parameters, IllegalSetup,
    testing::Values(illegal_case{"ecg1", 2.25, 0.2, 4, 2}, illegal_case{"ewt1", 21.25, 1.5, 4, 2},
                    illegal_case{"ncgtyp", 21.25, 0.2, 6, 2}, illegal_case{"nred", 21.25, 0.2, 49, 2},
                    illegal_case{"nxf_clean", 21.25, 0.2, 4003, 2},
                    illegal_case{"npcol", 21.25, 0.2, 40003, 2}, illegal_case{"nwtint", 21.25, 0.2, 4, 5},
                    illegal_case{"iall", 21.25, 0.2, 4, 2002}),
    [](const auto& c) { return std::string(c.param.name); });

}  // namespace
