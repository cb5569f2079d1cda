// The work space of the BLAS, taken before a factorisation needs it.
// Called by the run order once, behind the head of the report.
#include "run/blas_workspace.h"

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <vector>

#include "run/base/failure.h"

extern "C" void dgemm_(const char* transA, const char* transB, const int* m, const int* n, const int* k,
                       const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
                       const double* beta, double* c, const int* ldc);

namespace keld {
namespace {

// Work space of the calling thread and of one that has yet to begin, and room for the call itself.
constexpr std::size_t megabytes_needed = 2 * 128 + 8;

bool canBeMapped(std::size_t bytes) {
  void* const place = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) return false;
  ::munmap(place, bytes);
  return true;
}

/// The ordinary way out would wait for the threads of the BLAS, which may be trying for memory.
[[noreturn]] void endWithoutThreads() {
  try {
    vFail(
        "\n !! Error !!  Not enough memory: the linear algebra library needs %zu MB of address space. Raise "
        "the limit (ulimit -v) or end other programs.\n",
        megabytes_needed);
  } catch (const RunEnded& end) {
    std::_Exit(end.status);
  }
}

}  // namespace

void takeBlasWorkspace() {
  if (!canBeMapped(megabytes_needed << 20)) endWithoutThreads();
  const int size = 128;  // large enough for more threads than one
  const double one = 1.0, zero = 0.0;
  const std::vector<double> factor(std::size_t{size} * size);
  std::vector<double> product(factor.size());
  dgemm_("N", "N", &size, &size, &size, &one, factor.data(), &size, factor.data(), &size, &zero,
         product.data(), &size);
}

}  // namespace keld
