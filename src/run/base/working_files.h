// The working-file set: every path of a run, composed once from the base name and the installation folder.
// Written by the entry point, read by all stages; no other place composes a path.
#pragma once

#include <array>
#include <chrono>
#include <string>

namespace keld {

/// Paths are bytes as the caller gave them, UTF-8 as a rule, never normalised.
struct WorkingFileSet {
  std::string baseName;     // bare name: pairing table, scratch file, first argument of the external tool
  std::string installRoot;  // ends with a separator that the caller gives

  std::string prc, cpu, bc1, mal, pg1, rs1, pt1, ct1;  // inputs of the job
  std::string report, log, results;                    // ".WD1", ".WLG1", ".WR1"
  std::array<std::string, 8> staleResults;             // ".WR2" to ".WR9", removed at start
  std::string temporary;                               // ".TM1", removed after the solve stages
  std::string wg1;                                     // ".WG1", opened by no stage

  std::string stringTable, unitTable;                 // "Standard/String.STD", "Standard/Unit.STD"
  std::string standardCpu, standardPrc, standardMal;  // "Standard/File.CPU" ...
  std::string toolFolder;                             // "Software/Favioda/Movrex"
};

extern WorkingFileSet workingFiles;

/// Composes the whole set.
WorkingFileSet composeWorkingFiles(const std::string& baseName, const std::string& installRoot);

/// Whether the file can be opened for reading now. A pipe, device or folder in its place ends the run.
bool fileReadable(const std::string& path);

constexpr int openAttempts = 10;

/// Pause after a failed attempt to open a file that may still be arriving; tests shorten it.
extern std::chrono::milliseconds retryPause;

/// Waits for a file that may still be arriving: up to ten attempts, a pause after each failed one.
/// Returns whether the file can be opened now.
bool waitForFile(const std::string& path);

}  // namespace keld
