// How many threads the kernels may use.
#include "tier/store/threads.h"

#include <algorithm>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "tier/store/parameters.h"

namespace tier {

namespace {

/// Threads that a call may use.
struct thread_limit {
  int value = 1;
};
const per_context<thread_limit> limit;

int runtime_threads() {
#ifdef _OPENMP
  return omp_get_max_threads();
#else
  return 1;
#endif
}

}  // namespace

int max_threads() { return limit().value; }

// A caller that itself runs in n threads leaves each of its calls the n-th part of the runtime's team.
void set_max_threads(int omp_num_threads_external) {
  limit().value = std::max(1, runtime_threads() / std::max(1, omp_num_threads_external));
}

int team_size(std::int64_t rows, int nmin) {
  const int most = max_threads();
  return rows < std::int64_t{nmin} * most ? 1 : most;
}

int setup_team(int n) {
  constexpr int least_rows = 500;
  return team_size(n, least_rows);
}

int matrix_team(int n) { return std::min(most_threads, team_size(n, parm().nmin_matrix)); }
int restriction_team(int n) { return std::min(most_threads, team_size(n, parm().nmin_matrix_resc)); }
int vector_team(std::int64_t n) { return std::min(most_threads, team_size(n, parm().nmin_vector)); }

}  // namespace tier
