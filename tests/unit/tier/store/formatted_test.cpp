// What the library writes has decimal points in a locale with decimal commas.
#include "tier/store/formatted.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "places.h"
#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/store/parameters.h"

namespace {

using testing::ContainsRegex;
using testing::Not;
using tier::parm;

constexpr const char* comma = "[0-9],[0-9]";

/// The program's locale has a decimal comma: the path stands in place of a name.
void use_comma_locale() {
  ASSERT_EQ(setenv("LOCPATH", places::comma_locale.parent_path().c_str(), 1), 0);
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
  char text[20];
  std::snprintf(text, sizeof text, "%g", 0.5);
  ASSERT_STREQ(text, "0,5");
}

TEST(DecimalPoint, StandsInReportsAndDumpedFilesInEveryLocale) {
  use_comma_locale();
  const std::filesystem::path folder = testing::TempDir() + "tier_formatted_test";
  std::filesystem::create_directory(folder);
  std::filesystem::current_path(folder);
  testing_support::tier_call call = testing_support::poisson_call();
  parm().nptmn = 10;
  parm().itrace_clsol = parm().itrace_sol = parm().itrace_amgmain = 3;
  parm().nrc = 2;
  call.matrix = 12;
  call.idump = 2;
  call.iout = 3;

  call.run();

  EXPECT_THAT(call.said, Not(ContainsRegex(comma)));
  EXPECT_THAT(call.said, ContainsRegex("average reduction: .*0\\.[0-9]"));
  std::stringstream dump;
  dump << std::ifstream("level1.matrix.mtx").rdbuf() << std::ifstream("level1.interp.mtx").rdbuf();
  EXPECT_THAT(dump.str(), Not(ContainsRegex(comma)));
  EXPECT_THAT(dump.str(), ContainsRegex("[0-9]\\.[0-9]"));
  EXPECT_EQ(std::string(std::localeconv()->decimal_point), ",");  // the caller's locale is as it was
  std::filesystem::remove_all(folder);
}

}  // namespace
