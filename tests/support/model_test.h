// Fixture of the tests of src/model: working files in the temporary folder, no wait at a reported failure.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "run/base/failure.h"
#include "run/base/working_files.h"
#include "support/model_maker.h"

namespace keld::testing_support {

class ModelTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr);
    folder_ = std::filesystem::path(testing::TempDir()) / ("keld_model_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
    workingFiles = composeWorkingFiles((folder_ / "job").string(), "");
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  /// Console text of a step that must end the run.
  template <class Step>
  std::string failureOf(const Step& step) {
    testing::internal::CaptureStdout();
    EXPECT_THROW(step(), RunEnded);
    return testing::internal::GetCapturedStdout();
  }

 private:
  std::filesystem::path folder_;
};

/// How often a text stands in another.
inline int occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto p = text.find(part); p != std::string::npos; p = text.find(part, p + part.size())) ++count;
  return count;
}

}  // namespace keld::testing_support
