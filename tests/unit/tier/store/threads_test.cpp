// The share of the runtime's threads that a call takes.
#include "tier/store/threads.h"

#include <gtest/gtest.h>
#include <omp.h>

namespace {

TEST(Threads, AreTheCallersShareOfTheRuntimes) {
  omp_set_num_threads(6);
  for (const auto& [external, threads] : {std::pair{0, 6}, {1, 6}, {2, 3}, {4, 1}, {100, 1}}) {
    tier::set_max_threads(external);
    EXPECT_EQ(tier::max_threads(), threads) << external;
  }
}

TEST(Threads, RunShortLoopsAlone) {
  omp_set_num_threads(4);
  tier::set_max_threads(1);
  EXPECT_EQ(tier::team_size(39, 10), 1);
  EXPECT_EQ(tier::team_size(40, 10), 4);
}

TEST(Threads, OwnConsecutiveChunksTheLastTheRest) {
  int lo = 0, hi = 0, next = 5;
  for (int tid = 0; tid < 3; ++tid) {
    tier::chunk_of_thread(5, 15, tid, 3, lo, hi);
    EXPECT_EQ(lo, next);
    EXPECT_EQ(hi - lo + 1, tid < 2 ? 3 : 5);
    next = hi + 1;
  }
}

}  // namespace
