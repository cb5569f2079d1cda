// Few threads allowed: the run then has one. Part of the program alone.
// The BLAS makes its threads as it is loaded, before main, and the runtime of OpenMP at the first parallel
// region; where the system refuses one they end the process, one by a signal. The dynamic loader calls this
// before any library begins. Where threads are refused the program is started anew with one for each.
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <vector>

namespace {

constexpr std::array<const char*, 2> single_thread = {"OPENBLAS_NUM_THREADS=1", "OMP_NUM_THREADS=1"};

constexpr std::size_t stack_bytes = 256 << 10;  // the thread-local storage of the BLAS alone takes 60 KB

/// Number behind "NAME=" in the environment, 0 without one.
int numberIn(char** environment, std::string_view name) {
  for (; *environment != nullptr; ++environment) {
    const std::string_view entry(*environment);
    if (!entry.starts_with(name)) continue;
    int number = 0;
    std::from_chars(entry.data() + name.size(), entry.data() + entry.size(), number);
    return number;
  }
  return 0;
}

int processors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  return ::sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
}

/// Threads that both libraries will make beside the first.
int threadsWanted(char** environment) {
  constexpr int most = 1024;
  const int all = processors();
  const int openMp = numberIn(environment, "OMP_NUM_THREADS=");
  const int blas = numberIn(environment, "OPENBLAS_NUM_THREADS=");
  const int ofOpenMp = openMp > 0 ? openMp : all;
  const int ofBlas = std::min(blas > 0 ? blas : ofOpenMp, all);
  return std::min(ofOpenMp + ofBlas - 2, most);
}

extern "C" void* waitForLock(void* lock) {
  ::pthread_mutex_lock(static_cast<pthread_mutex_t*>(lock));
  ::pthread_mutex_unlock(static_cast<pthread_mutex_t*>(lock));
  return nullptr;
}

/// Makes so many threads, which all live until the last is made.
bool threadsCanBeMade(int count) {
  pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
  pthread_attr_t small;
  ::pthread_attr_init(&small);
  ::pthread_attr_setstacksize(&small, stack_bytes);
  ::pthread_mutex_lock(&lock);
  std::vector<pthread_t> made;
  made.reserve(static_cast<std::size_t>(count));
  pthread_t thread{};
  for (int i = 0; i < count && ::pthread_create(&thread, &small, waitForLock, &lock) == 0; ++i)
    made.push_back(thread);
  ::pthread_mutex_unlock(&lock);
  for (const pthread_t each : made) ::pthread_join(each, nullptr);
  return made.size() == static_cast<std::size_t>(count);
}

void startWithOneThread(char** arguments, char** environment) {
  std::vector<char*> changed;
  changed.reserve(std::size(single_thread));
  for (const char* entry : single_thread) changed.push_back(const_cast<char*>(entry));  // execve's type
  for (; *environment != nullptr; ++environment) {
    const std::string_view entry(*environment);
    if (!entry.starts_with("OPENBLAS_NUM_THREADS=") && !entry.starts_with("OMP_NUM_THREADS="))
      changed.push_back(*environment);
  }
  changed.push_back(nullptr);
  ::execve("/proc/self/exe", arguments, changed.data());
}

void probeThreads(int, char** arguments, char** environment) {
  const int wanted = threadsWanted(environment);
  if (wanted > 0 && !threadsCanBeMade(wanted)) startWithOneThread(arguments, environment);
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const first_of_all)(int, char**, char**) = probeThreads;

}  // namespace
