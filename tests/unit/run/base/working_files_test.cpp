// The wait for files that may still be arriving.
#include "run/base/working_files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace keld {
namespace {

using namespace std::chrono_literals;

TEST(WaitForFile, MakesTenAttemptsWithAPauseBehindEach) {
  retryPause = 20ms;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(waitForFile("/nonexistent/file"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);  // a busy machine allows no upper bound
}

TEST(WaitForFile, TakesAFileThatArrivesMeanwhileAndAsksNoFurther) {
  const std::string path = testing::TempDir() + "keld_late_file";
  std::filesystem::remove(path);
  retryPause = 300ms;
  std::thread sender([&path] {
    std::this_thread::sleep_for(50ms);
    std::ofstream(path) << "late";
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(waitForFile(path));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2500ms);
  EXPECT_TRUE(waitForFile(path));
  sender.join();
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace keld
