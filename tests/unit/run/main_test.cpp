// The program from outside: working files and ends of a run.
#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <vector>

#include "places.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::ScratchJob;

/// A copy of the smallest case on the direct path.
ScratchJob smallJob() {
  ScratchJob job = ScratchJob::copyOf(places::cases / "plate-stress");
  job.chooseSolver(2);
  return job;
}

std::string outputOf(const std::string& words) {
  const std::filesystem::path output =
      std::filesystem::temp_directory_path() / ("keld-out-" + std::to_string(getpid()));
  EXPECT_EQ(
      std::system(("'" + places::program.string() + "' " + words + " >'" + output.string() + "'").c_str()),
      0);
  std::string text = testing_support::readText(output);
  std::filesystem::remove(output);
  return text;
}

TEST(Program, TellsHelpAndVersion) {
  EXPECT_THAT(outputOf("--help"), HasSubstr("Usage: keld BASE"));
  EXPECT_THAT(outputOf("--version"), testing::MatchesRegex("keld [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Program, RemovesStaleFilesAndTellsTheThreadLimit) {
  const ScratchJob job = smallJob();
  for (const char* stale : {".WR2", ".WR9", ".TM1"}) job.write(stale, "stale");

  const auto outcome = job.run("", "-cpu 1 </dev/null");

  EXPECT_EQ(outcome.status, 0) << outcome.console;
  EXPECT_FALSE(job.has(".WR2") || job.has(".WR9") || job.has(".TM1"));
  EXPECT_THAT(job.read(".WD1"),
              HasSubstr("<br> # Number of processor available of running process=   1\n\n"));
}

TEST(Program, TellsItsProcessorTimeInSeconds) {
  const ScratchJob job = smallJob();
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(job.run("OMP_NUM_THREADS=1").status, 0);
  const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const std::string report = job.read(".WD1"), words = "** CPU Time     **  : ";
  const std::size_t place = report.find(words);
  ASSERT_NE(place, std::string::npos);
  const double told = std::stod(report.substr(place + words.size()));
  EXPECT_GT(told, 0.0);
  EXPECT_LT(told, 1.5 * wall + 0.1);  // BLAS may have a thread of its own
}

TEST(Program, AFailedRunWaitsForTheEndOfInputAndKeepsTheOldResults) {
  const ScratchJob job = smallJob();
  job.write(".WR1", "former");
  job.write(".PG1", testing_support::replaced(job.read(".PG1"), "48 35", "48 36"));

  const std::string answered = "'" + job.path(".answered") + "'";
  const auto outcome = job.run("(sleep 0.3; touch " + answered + ") | {",
                               "; s=$?; test -e " + answered + " || s=99; exit $s; }");

  EXPECT_EQ(outcome.status, 1) << "99: it has ended before its input";
  EXPECT_THAT(outcome.console, HasSubstr(job.path(".PG1") + ", line "));
  EXPECT_EQ(job.read(".WR1"), "former");
}

TEST(Program, AFileSizeLimitIsAFailedWrite) {
  const ScratchJob job = smallJob();
  const auto outcome = job.run("ulimit -f 4;");
  EXPECT_EQ(outcome.status, 1) << outcome.console;
  EXPECT_THAT(outcome.console, HasSubstr("File too large"));
  for (const auto& entry : std::filesystem::directory_iterator(job.folder()))
    EXPECT_THAT(entry.path().string(), testing::Not(HasSubstr(".WR1")));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(Program, RunsOnOneThreadWhereTheSystemRefusesMore) {
  const ScratchJob job = smallJob();
  namespace fs = std::filesystem;
  const fs::path program = job.folder() / "keld";  // where another user reaches it
  fs::copy_file(places::program, program);
  for (const auto& entry : fs::recursive_directory_iterator(job.folder()))
    fs::permissions(entry, fs::perms::all);
  fs::permissions(job.folder(), fs::perms::all);
  const bool root = ::geteuid() == 0;  // to whom limits of processes don't apply
  const std::string command = std::string(root ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "") +
                              "prlimit --nproc=1 '" + program.string() + "' '" + job.base() + "' 1@ '" +
                              job.install() + "' 2@ </dev/null >/dev/null 2>&1";
  const int status = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(status)) << "ended by a signal";
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_THAT(job.read(".WD1"), HasSubstr("treads of the run-time system=   1\n"));
}

TEST(Program, TheLibrarysWorkSpaceIsAskedForOnceForEachThread) {
  const ScratchJob job = smallJob();
  const auto outcome = job.run("ulimit -v 250000; OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1");
  EXPECT_EQ(outcome.status, 0) << outcome.console;
}
#endif

#ifndef __SANITIZE_ADDRESS__  // whose own tables need more room than the limit leaves
TEST(Program, MemoryThatCannotBeHadIsTold) {
  const ScratchJob job = smallJob();
  std::filesystem::resize_file(job.path(".RS1"), std::uintmax_t{1} << 40);
  const auto outcome = job.run("ulimit -v 4000000;");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.console, HasSubstr("Not enough memory"));
}
#endif

}  // namespace
}  // namespace keld
