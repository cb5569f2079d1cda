// Composition of the working-file set and the wait for late files.
// Called by the entry point (composition) and the readers (wait).
#include "run/base/working_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <thread>

namespace keld {

WorkingFileSet workingFiles;
std::chrono::milliseconds retryPause{1000};

WorkingFileSet composeWorkingFiles(const std::string& baseName, const std::string& installRoot) {
  WorkingFileSet set;
  set.baseName = baseName;
  set.installRoot = installRoot;

  set.prc = baseName + ".PRC";
  set.cpu = baseName + ".CPU";
  set.bc1 = baseName + ".BC1";
  set.mal = baseName + ".MAL";
  set.pg1 = baseName + ".PG1";
  set.rs1 = baseName + ".RS1";
  set.pt1 = baseName + ".PT1";
  set.ct1 = baseName + ".CT1";
  set.report = baseName + ".WD1";
  set.log = baseName + ".WLG1";
  set.results = baseName + ".WR1";
  for (std::size_t i = 0; i < set.staleResults.size(); ++i)
    set.staleResults[i] = baseName + ".WR" + std::to_string(i + 2);
  set.temporary = baseName + ".TM1";
  set.wg1 = baseName + ".WG1";

  set.stringTable = installRoot + "Standard/String.STD";
  set.unitTable = installRoot + "Standard/Unit.STD";
  set.standardCpu = installRoot + "Standard/File.CPU";
  set.standardPrc = installRoot + "Standard/File.PRC";
  set.standardMal = installRoot + "Standard/File.MAL";
  set.toolFolder = installRoot + "Software/Favioda/Movrex";
  return set;
}

bool fileReadable(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

bool waitForFile(const std::string& path) {
  for (int attempt = 1; attempt <= openAttempts; ++attempt) {
    if (fileReadable(path)) return true;
    std::this_thread::sleep_for(retryPause);
  }
  return false;
}

}  // namespace keld
