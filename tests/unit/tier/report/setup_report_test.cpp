// The figures of the set-up report.
#include "tier/report/setup_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "support/tier/tier_call.h"
#include "tier/store/parameters.h"

namespace {

// More than provided is an extension by the rest, less is wasted: never both.
TEST(SetupReport, TellsWhatWasExtendedAndWhatWasted) {
  int extended_arrays = 0, wasteful_arrays = 0;
  for (const double estimate : {1.0, 9.0}) {
    testing_support::tier_call call = testing_support::poisson_call();
    tier::parm().nptmn = 10;
    call.a_cmplx = call.g_cmplx = call.p_cmplx = call.w_avrge = estimate;
    call.idump = 1;
    call.run();
    std::istringstream lines(call.said);
    for (std::string line; std::getline(lines, line);) {
      long used = 0, provided = 0, extended = 0, wasted = 0;
      char name[20];
      if (std::sscanf(line.c_str(), " %19s >= %ld provided: %ld extended by: %ld wasted: %ld", name, &used,
                      &provided, &extended, &wasted) != 5)
        continue;
      EXPECT_EQ(used, provided + extended - wasted) << line;
      EXPECT_TRUE(extended == 0 || wasted == 0) << line;
      EXPECT_GE(std::min(extended, wasted), 0) << line;
      extended_arrays += extended > 0;
      wasteful_arrays += wasted > 0;
    }
  }
  EXPECT_GT(extended_arrays, 0);
  EXPECT_GT(wasteful_arrays, 0);
}

}  // namespace
