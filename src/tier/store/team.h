// Row loops of set-up: one parallel region in which each thread has a range of consecutive rows.
// Used by every threaded step of set-up; bodies never throw.
#pragma once

#include <cstdint>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "tier/store/threads.h"

namespace tier {

/// A thread's rows and its place in the team.
struct row_range {
  int lo, hi, tid, team;
};

/// Threads for a step of set-up over n rows; small levels are not worth a team.
inline int setup_team(int n) {
  constexpr int least_rows = 500;
  return team_size(n, least_rows);
}

/// Runs body(range of rows) once in each thread of the team, on rows 1..n in equal chunks.
template <class Body>
void run_team(int n, int team, Body body) {
  if (team <= 1) {
    body(row_range{1, n, 0, 1});
    return;
  }
#ifdef _OPENMP
#pragma omp parallel num_threads(team)
  {
    row_range rows{1, n, omp_get_thread_num(), omp_get_num_threads()};
    chunk_of_thread(1, n, rows.tid, rows.team, rows.lo, rows.hi);
    body(rows);
  }
#endif
}

inline void team_barrier(const row_range& rows) {
  if (rows.team <= 1) return;
#pragma omp barrier
}

}  // namespace tier
