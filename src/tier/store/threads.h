// Thread teams of the kernels: how many, which rows each owns,
// and sums whose parts are added in thread order.
#pragma once

#include <cstdint>

#include "tier/store/work_arrays.h"

namespace tier {

/// Threads that a call of TIER may use, by omp_num_threads_external and the OpenMP runtime; set by tier_main.
int max_threads();
void set_max_threads(int omp_num_threads_external);

/// Threads for a loop over `rows` rows: 1 below `nmin` rows per thread, else max_threads().
int team_size(std::int64_t rows, int nmin);

constexpr int most_threads = 256;

/// Threads for a step of set-up over n rows; small levels are not worth a team.
int setup_team(int n);

/// Teams of the row loops over a matrix, of restriction and over vectors, by nmin_matrix, nmin_matrix_resc
/// and nmin_vector; most_threads at most.
int matrix_team(int n);
int restriction_team(int n);
int vector_team(std::int64_t n);

/// Range lo..hi of thread `tid` of `team` in ilo..ihi: equal chunks, the last thread takes the rest.
inline void chunk_of_thread(int ilo, int ihi, int tid, int team, int& lo, int& hi) {
  const int size = (ihi - ilo + 1) / team;
  lo = ilo + tid * size;
  hi = tid == team - 1 ? ihi : lo + size - 1;
}

}  // namespace tier
