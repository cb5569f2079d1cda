#include "run/base/streams.h"

#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;

struct StreamCase {
  int stream;
  const char *console, *report, *log;
};

class Streams : public InputTest, public testing::WithParamInterface<StreamCase> {};

TEST_P(Streams, ReachTheirPlaces) {
  const std::string console = consoleOf([] {
    const ReportSection section;
    vPrintMessage(GetParam().stream, "%d %s\n", 5, "ä");
  });

  EXPECT_EQ(console, GetParam().console);
  EXPECT_EQ(report(), GetParam().report);
  EXPECT_EQ(job_.read(".WLG1"), GetParam().log);
}

INSTANTIATE_TEST_SUITE_P(All, Streams,
                         testing::Values(StreamCase{0, "5 ä\n", "", ""},
                                         StreamCase{1, "5 ä\n", "<br>5 ä\n", ""},
                                         StreamCase{2, "", "5 ä\n", ""}, StreamCase{-1, "", "<br>5 ä\n", ""},
                                         StreamCase{-2, "", "5 ä\n", ""}, StreamCase{-3, "", "<br>5 ä\n", ""},
                                         StreamCase{100, "5 ä\n", "", "5 ä\n"}, StreamCase{3, "", "", ""}));

TEST_F(InputTest, StreamMinusOneClosesAndMinusTwoStaysOpen) {
  vOpenMessageFile(OpenMode::append);
  vPrintMessage(-2, "a");
  vPrintMessage(-1, "b");
  vPrintMessage(-2, "lost: closed");
  EXPECT_EQ(report(), "a<br>b");
}

TEST_F(InputTest, FatalFaultsAbortWithTheirWords) {
  workingFiles.report = "/nowhere/at all";
  EXPECT_EXIT({ std::freopen("/dev/stderr", "w", stdout) ? vPrintMessage(1, "x") : void(); },
              testing::KilledBySignal(SIGABRT), "Couldn't open added message file for writing");
  workingFiles.log = std::string(1024, 'x');
  EXPECT_EXIT({ std::freopen("/dev/stderr", "w", stdout) ? vPrintMessage(100, "x") : void(); },
              testing::KilledBySignal(SIGABRT), "vMakeFileName\\(\\)\nQuality file name too long");
}

TEST_F(InputTest, NoTextAtAllIsWritten) {
  EXPECT_EQ(echoOf([] { vWriteReport({}); }), "");  // a unit that the table lacks; a sanitizer watches
}

TEST_F(InputTest, AFullDiskEndsTheRunOnce) {
  workingFiles.report = "/dev/full";
  const std::string console = testing_support::faultOf([] { vPrintMessage(1, "text"); });
  EXPECT_THAT(console, HasSubstr("Cannot write to /dev/full: No space left"));
}

}  // namespace
}  // namespace keld
