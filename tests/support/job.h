// Jobs in scratch folders and runs of the program on them, for tests of whole runs.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "run/base/column.h"

namespace keld::testing_support {

/// A folder of its own for one job, removed at the end. Working files are `base` + suffix.
class ScratchJob {
 public:
  /// An empty folder; `stem` names the working files and may hold blanks and any letters.
  explicit ScratchJob(const std::string& stem = "job");
  /// A copy of a job folder that holds job.* and install/.
  static ScratchJob copyOf(const std::filesystem::path& jobFolder, const std::string& stem = "job");
  ScratchJob(ScratchJob&& other) noexcept;
  ~ScratchJob();

  const std::filesystem::path& folder() const { return folder_; }
  std::string base() const { return (folder_ / stem_).string(); }
  std::string install() const { return (folder_ / "install").string() + "/"; }
  std::string path(const std::string& suffix) const { return base() + suffix; }
  bool has(const std::string& suffix) const { return std::filesystem::exists(path(suffix)); }
  std::string read(const std::string& suffix) const;
  void write(const std::string& suffix, const std::string& text) const;
  void remove(const std::string& suffix) const { std::filesystem::remove(path(suffix)); }

  /// Sets value 2 of the ".CPU" file.
  void chooseSolver(int solverChoice) const;

  struct Outcome {
    int status = -1;      // exit status, -1 when a signal ended the program
    std::string console;  // standard output and standard error
  };
  /// Runs the program on the job through the shell. `prefix` stands before its path (settings of the
  /// environment, limits), `redirection` behind its words; standard input is empty as a rule.
  Outcome run(const std::string& prefix = "", const std::string& redirection = "</dev/null") const;

 private:
  std::filesystem::path folder_;
  std::string stem_;
};

/// A text file as a whole; throws when it can't be read.
std::string readText(const std::filesystem::path& path);
std::vector<std::string> linesOf(const std::string& text);

/// ".WR1" as numbers in mm: rows of a block by geometry node, without the row number.
/// Throws when the block is missing or the rows don't count from 1 to Glength.
Column<std::vector<double>> resultBlock(const std::string& resultsText, const std::string& tag);

}  // namespace keld::testing_support
