// Linux side of the analysis.
// Called by the entry point and by the direct solution.
#include "run/base/platform.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <limits>
#include <thread>

namespace keld {
namespace {

std::tm localTimeOf(std::time_t time) {
  std::tm parts{};
  localtime_r(&time, &parts);
  return parts;
}

/// Number behind `key` in a file of "key number" lines; with an empty key the number that begins the file.
/// Nothing that can be read counts as no limit.
std::uint64_t numberInFile(const char* path, const std::string& key) {
  constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();
  std::ifstream file(path);
  std::string word;
  if (!key.empty())
    while (file >> word && word != key) continue;
  std::uint64_t number = 0;
  return file >> number ? number : none;
}

}  // namespace

long processorClock() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

int processorCount() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof set, &set) == 0) return CPU_COUNT(&set);
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

std::string localTime(const char* format) {
  const std::tm parts = localTimeOf(std::time(nullptr));
  std::array<char, 128> text{};
  return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

std::string programReleaseTime() {
  struct stat status {};
  if (::stat("/proc/self/exe", &status) != 0) return {};
  const std::tm t = localTimeOf(status.st_mtime);
  std::array<char, 96> text{};
  const int length = std::snprintf(text.data(), text.size(), "%d/%d/%d  %d:%d:%d", t.tm_year + 1900,
                                   t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
  return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

std::uint64_t availableMemory() {
  const std::uint64_t kilobytes = numberInFile("/proc/meminfo", "MemAvailable:");
  std::uint64_t bytes = kilobytes == std::numeric_limits<std::uint64_t>::max() ? kilobytes : kilobytes * 1024;
  const std::uint64_t limit = numberInFile("/sys/fs/cgroup/memory.max", "");
  const std::uint64_t used = numberInFile("/sys/fs/cgroup/memory.current", "");
  if (limit != std::numeric_limits<std::uint64_t>::max() && used < limit)
    bytes = std::min(bytes, limit - used);
  return bytes;
}

void preferLargePages(void* begin, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(begin) % page) % page;
  if (bytes < before + page) return;
  ::madvise(static_cast<char*>(begin) + before, (bytes - before) / page * page, MADV_HUGEPAGE);
#endif
}

int runExternalProgram(const std::string& path, const std::vector<std::string>& words) {
  std::vector<std::string> own{path};
  own.insert(own.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  arguments.reserve(own.size() + 1);
  for (std::string& word : own) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  pid_t process = 0;
  if (::posix_spawn(&process, path.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) return -1;
  int status = 0;
  while (::waitpid(process, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void secureStandardStreams() {
  int fd = ::open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::dup(fd);
  if (fd >= 0) ::close(fd);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace keld
