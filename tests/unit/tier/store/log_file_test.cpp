// The output channel, message classes, clocks.
#include "tier/store/log_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tier/api/tier.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace {

using testing::HasSubstr;
using tier::parm;

std::string contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

struct Channel {
  const char* name;
  int logio;
  std::string logfile;
  int ierr;
  const char* words;  // on standard output
};

class OpenLogfile : public testing::TestWithParam<Channel> {};

TEST_P(OpenLogfile, FollowsUnitAndFile) {
  parm().logio = GetParam().logio;
  parm().logfile = GetParam().logfile;
  int ierr = -1;

  testing::internal::CaptureStdout();
  TIER_OPEN_LOGFILE(&ierr);
  tier::message("a line");
  TIER_FLUSH();

  EXPECT_EQ(ierr, GetParam().ierr);
  EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(GetParam().words));
}

INSTANTIATE_TEST_SUITE_P(
    Units, OpenLogfile,
    testing::Values(
        Channel{"Standard", 6, "", 0, "a line\n"}, Channel{"None", 0, "", 0, ""},
        Channel{"Input", 5, "", 1, "Unit=5: Specify a logfile or another unit number (open_logfile)!"},
        Channel{"NoFile", 17, "", 1, "### PRBLM: Printing via unit 6 since logio = 17 is not valid!"},
        Channel{"Negative", -3, "x", 1, "Specified unit does not exist (open_logfile)!"},
        Channel{"NoFolder", 17, "/nonexistent/x.log", 1,
                "Logfile does not exist and could not be opened (open_logfile)!"},
        Channel{"Folder", 17, "/tmp", 1, "Logfile exists but could not be opened (open_logfile)!"}),
    [](const testing::TestParamInfo<Channel>& tested) { return tested.param.name; });

TEST(LogFile, IsContinuedAndNotSharedByUnits) {
  const std::string path = testing::TempDir() + "tier_log_file_test.log";
  std::ofstream(path) << "before\n";
  parm().logio = 17;
  parm().logfile = path;
  ASSERT_EQ(tier::open_logfile(), 0);
  tier::message("during   ", 1, 0);
  ASSERT_EQ(tier::open_logfile(), 0);
  parm().logio = 18;
  EXPECT_EQ(tier::open_logfile(), 1);
  TIER_CLOSE_LOGFILE();
  EXPECT_THAT(contents(path), testing::StartsWith("before\n\nduring\n"));
  EXPECT_THAT(contents(path), HasSubstr("Logfile already connected to different unit (open_logfile)!"));
  std::filesystem::remove(path);
}

TEST(LogFile, TellsOnceThatTheDiskIsFullAndGoesOnWithUnitSix) {
  for (const int unit : {17, 0}) {
    parm().logio = unit;
    parm().logfile = "/dev/full";
    testing::internal::CaptureStdout();
    ASSERT_EQ(tier::open_logfile(), 0);
    tier::message("lost");
    tier::flush_output();
    tier::message("kept");
    TIER_CLOSE_LOGFILE();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "### PRBLM: Printing via unit 6 since logfile </dev/full> cannot be written, lines are lost: "
              "No space left on device\nkept\n");
  }
}

TEST(Messages, PassByClassAndMode) {
  const std::pair<int, std::string> expected[] = {
      {-3, ""},
      {-2, "*** ERROR: x\n"},
      {-1, "*** ERROR: x\n+++ WARNG: x\n"},
      {0, "*** ERROR: x\n+++ WARNG: x\n>>> MESSG: x\n"},
      {1, "*** ERROR: x\n+++ WARNG: x\n>>> MESSG: x\n>>> CNTRL: x\n"}};
  for (const auto& [mode, said] : expected) {
    parm().mode_mess = mode;
    testing::internal::CaptureStdout();
    for (const int message_class : {1, -1, 0, -2}) {
      const int none = 0, length = 3;
      TIER_INFO(&message_class, &none, &none, "x  ", &length);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), said);
  }
}

TEST(Messages, AreCutAtTwoHundredCharacters) {
  testing::internal::CaptureStdout();
  tier::message(std::string(500, 'y'));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(200, 'y') + "\n");
}

TEST(Clock, SpansAWrapOfTheCounter) {
  float span = 0.0F, sum = 1.0F;
  const float early = 2.0F, late = 5.0F, before_wrap = 2147483.0F;
  TIER_COMPTIME(&span, &early, &late);
  TIER_ADDTIME(&sum, &early, &late);
  EXPECT_EQ(std::pair(span, sum), std::pair(3.0F, 4.0F));
  TIER_COMPTIME(&span, &before_wrap, &early);
  EXPECT_NEAR(span, 2.647F,
              0.3F);  // the resolution of single precision near the wrap is an eighth of a second
}

}  // namespace
