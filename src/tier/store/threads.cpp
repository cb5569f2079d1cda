// How many threads the kernels may use.
#include "tier/store/threads.h"

#include <algorithm>

#ifdef _OPENMP
#include <omp.h>
#endif

namespace tier {

namespace {

int thread_limit = 1;

int runtime_threads() {
#ifdef _OPENMP
  return omp_get_max_threads();
#else
  return 1;
#endif
}

}  // namespace

int max_threads() { return thread_limit; }

// A caller that itself runs in n threads leaves each of its calls the n-th part of the runtime's team.
void set_max_threads(int omp_num_threads_external) {
  thread_limit = std::max(1, runtime_threads() / std::max(1, omp_num_threads_external));
}

int team_size(std::int64_t rows, int nmin) {
  return rows < std::int64_t{nmin} * thread_limit ? 1 : thread_limit;
}

}  // namespace tier
