// Expecting a run to end with a message: report and log in a scratch folder, empty standard input.
#pragma once

#include <gmock/gmock.h>

#include <cstdio>
#include <string>

#include "run/base/failure.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"
#include "support/job.h"

namespace keld::testing_support {

/// Points the working files at the job and empties report and log, as the start of a run does.
inline void startRun(const ScratchJob& job) {
  (void)!std::freopen("/dev/null", "r", stdin);
  workingFiles = composeWorkingFiles(job.base(), job.install());
  vOpenMessageFile(OpenMode::empty);
  vCloseMessageFile();
  vOpenLogMessageFile(OpenMode::empty);
  vCloseLogMessageFile();
}

/// Runs `action`, expects it to end the run with status 1 and returns what the console was told.
template <class Action>
std::string faultOf(const Action& action) {
  testing::internal::CaptureStdout();
  int status = 0;
  try {
    action();
  } catch (const RunEnded& end) {
    status = end.status;
  }
  std::fflush(stdout);
  std::string console = testing::internal::GetCapturedStdout();
  EXPECT_EQ(status, 1) << "the run should have ended; console: " << console;
  return console;
}

}  // namespace keld::testing_support
