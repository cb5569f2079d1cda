// Row loops: one parallel region over contiguous chunks, and sums whose parts are added in thread order.
// Used by every threaded step of set-up and by every kernel of the solution.
#pragma once

#ifdef _OPENMP
#include <omp.h>
#endif

#include "tier/store/numbered.h"
#include "tier/store/threads.h"

namespace tier {

/// A thread's part of a row loop.
struct row_chunk {
  int lo, hi;     // rows lo..hi
  int tid, team;  // this thread of how many
};

inline row_chunk chunk_here(int n) {
  row_chunk c{1, n, 0, 1};
#ifdef _OPENMP
  c.tid = omp_get_thread_num();
  c.team = omp_get_num_threads();
#endif
  chunk_of_thread(1, n, c.tid, c.team, c.lo, c.hi);
  return c;
}

/// The rows of another loop over 1..n for the same thread.
inline row_chunk chunk_like(const row_chunk& c, int n) {
  row_chunk other = c;
  chunk_of_thread(1, n, c.tid, c.team, other.lo, other.hi);
  return other;
}

/// Runs body(chunk) once in each thread of the team; the body must not throw.
template <class Body>
void for_chunks(int n, int team, Body body) {
  if (team <= 1) {
    body(row_chunk{1, n, 0, 1});
    return;
  }
#pragma omp parallel num_threads(team)
  body(chunk_here(n));
}

/// Waits for the team of the region around; nothing to do in a serial loop.
inline void team_barrier(const row_chunk& c) {
  if (c.team <= 1) return;
#pragma omp barrier
}

/// Per-thread parts of a sum, a cache line apart.
class thread_parts {
 public:
  void put(int tid, double value) { parts_[tid].value = value; }
  double sum(int team) const {
    double s = parts_[0].value;
    for (int t = 1; t < team; ++t) s += parts_[t].value;
    return s;
  }
  double largest(int team) const {
    double m = parts_[0].value;
    for (int t = 1; t < team; ++t) {
      const double p = parts_[t].value;
      if (!(p <= m)) m = p;  // a NaN stays
    }
    return m;
  }

 private:
  struct alignas(64) part {
    double value = 0.0;
  };
  numbered<part, most_threads> parts_;
};

/// Takes body(chunk) of each thread of the team into `parts`; returns how many threads ran.
template <class Body>
int gather_parts(int n, int team, thread_parts& parts, Body body) {
  int ran = 1;
  for_chunks(n, team, [&](const row_chunk& c) {
    parts.put(c.tid, body(c));
    if (c.tid == 0) ran = c.team;
  });
  return ran;
}

/// Sum over the team of body(chunk), parts added in thread order.
template <class Body>
double sum_chunks(int n, int team, Body body) {
  if (team <= 1) return body(row_chunk{1, n, 0, 1});
  thread_parts parts;
  return parts.sum(gather_parts(n, team, parts, body));
}

/// Largest body(chunk) over the team.
template <class Body>
double largest_of_chunks(int n, int team, Body body) {
  if (team <= 1) return body(row_chunk{1, n, 0, 1});
  thread_parts parts;
  return parts.largest(gather_parts(n, team, parts, body));
}

}  // namespace tier
