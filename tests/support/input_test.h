// Fixture of the tests of src/run and src/input: a scratch job, small label tables, no pauses.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "fuzz/readers.h"
#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "run/base/reading.h"
#include "support/faults.h"
#include "support/job.h"

namespace keld::testing_support {

class InputTest : public testing::Test {
 protected:
  void SetUp() override {
    startRun(job_);
    retryPause = std::chrono::milliseconds(0);
    fuzz::setTestLabels();
    processRecord = ProcessRecord{};
  }

  static TextReader textOf(const std::string& text) { return TextReader::fromText(text, "job"); }
  std::string report() const { return job_.read(".WD1"); }

  /// What the report gains while a section reader holds it open.
  template <class Action>
  std::string echoOf(const Action& action) {
    const std::size_t before = report().size();
    {
      const ReportSection section;
      action();
    }
    return report().substr(before);
  }

  /// The message of an action that must end the run, as the report shows it.
  template <class Action>
  std::string refusalOf(const Action& action) {
    const std::size_t before = report().size();
    EXPECT_THROW(action(), RunEnded);
    return report().substr(before);
  }

  /// The console's text of an action.
  template <class Action>
  static std::string consoleOf(const Action& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
  }

  ScratchJob job_;
};

/// A text of the seed corpus of a reader's fuzz target.
std::string seedOf(const std::string& reader, const std::string& name = "valid");

/// `text` with the first `what` replaced; `what` must stand there.
inline std::string replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t place = text.find(what);
  if (place == std::string::npos) throw std::logic_error("nothing to replace: " + what);
  return text.replace(place, what.size(), by);
}

}  // namespace keld::testing_support
