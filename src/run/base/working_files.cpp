// Composition of the working-file set and the wait for late files.
// Called by the entry point (composition) and the readers (wait).
#include "run/base/working_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <thread>

#include "run/base/failure.h"

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

namespace {

const char* kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "folder";
  if (S_ISFIFO(mode)) return "pipe";
  if (S_ISSOCK(mode)) return "socket";
  return "device";
}

}  // namespace

bool fileReadable(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    vFail(
        "\n !! Error !!  %s is a %s, which would be read for ever or not at all: a regular file was "
        "expected.\n",
        path.c_str(), kindOf(status.st_mode));
  }
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
