// The work space of the BLAS, taken before a factorisation needs it.
// Called by the run order once, behind the head of the report.
#include "run/blas_workspace.h"

#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "run/base/failure.h"

extern "C" void dgemm_(const char* transA, const char* transB, const int* m, const int* n, const int* k,
                       const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
                       const double* beta, double* c, const int* ldc);

namespace keld {
namespace {

constexpr std::size_t workspace_megabytes = 128, call_megabytes = 8;

bool canBeMapped(std::size_t megabytes) {
  void* const place =
      ::mmap(nullptr, megabytes << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) return false;
  ::munmap(place, megabytes << 20);
  return true;
}

struct OtherThreads {
  std::size_t count = 0, asleep = 0;
};

/// The threads beside this one; at this point of a run they are those of the BLAS.
OtherThreads otherThreads() {
  OtherThreads others;
  std::error_code none;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", none)) {
    if (task.path().filename() == std::to_string(::getpid())) continue;  // the first thread
    std::ifstream file(task.path() / "stat");
    const std::string line{std::istreambuf_iterator<char>(file), {}};
    const std::size_t nameEnd = line.rfind(')');  // the state stands behind the name and a blank
    ++others.count;
    others.asleep += nameEnd != std::string::npos && line.compare(nameEnd, 3, ") S") == 0;
  }
  return others;
}

/// Whether the BLAS can have the work spaces that it lacks. Each of its threads takes one as it begins and
/// then waits for work; where there is room for all of them nobody needs to know how far they are.
bool enoughForBlas() {
  constexpr std::size_t one = workspace_megabytes + call_megabytes;
  constexpr int attempts = 200;
  if (canBeMapped(otherThreads().count * workspace_megabytes + one)) return true;
  for (int i = 0; i < attempts; ++i) {
    const OtherThreads others = otherThreads();
    if (others.asleep == others.count) return canBeMapped(one);
    if (!canBeMapped(one)) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

/// The ordinary way out would wait for the threads of the BLAS, which may be trying for memory.
[[noreturn]] void endWithoutThreads() {
  try {
    vFail(
        "\n !! Error !!  Not enough memory: the linear algebra library needs %zu MB of address space for "
        "each of "
        "its threads. Raise the limit (ulimit -v), end other programs or take fewer threads "
        "(OPENBLAS_NUM_THREADS).\n",
        workspace_megabytes);
  } catch (const RunEnded& end) {
    std::_Exit(end.status);
  }
}

}  // namespace

void takeBlasWorkspace() {
  if (!enoughForBlas()) endWithoutThreads();
  const int size = 128;  // large enough for more threads than one
  const double one = 1.0, zero = 0.0;
  const std::vector<double> factor(std::size_t{size} * size);
  std::vector<double> product(factor.size());
  dgemm_("N", "N", &size, &size, &size, &one, factor.data(), &size, factor.data(), &size, &zero,
         product.data(), &size);
}

}  // namespace keld
