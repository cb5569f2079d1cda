// What the analysis asks of the OpenMP runtime; a build without it has one thread.
// Called by the run order and by the stages that give each thread rows or tables of its own.
#pragma once

#ifdef _OPENMP
#include <omp.h>
#endif

namespace keld {

/// Most threads of a parallel region, known before it begins.
inline int mostThreads() {
#ifdef _OPENMP
  return omp_get_max_threads();
#else
  return 1;
#endif
}

/// Number of the calling thread in its region, from 0, and the threads of the region.
struct ThreadPlace {
  int number = 0, count = 1;
};
inline ThreadPlace threadPlace() {
#ifdef _OPENMP
  return {omp_get_thread_num(), omp_get_num_threads()};
#else
  return {};
#endif
}

}  // namespace keld
