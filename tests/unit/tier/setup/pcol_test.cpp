// First pass against brute force that searches for the highest measure, on small random graphs.
#include "tier/setup/pcol.h"

#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>

#include "support/tier/split_search.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;

class FirstPass : public testing::TestWithParam<unsigned> {};

TEST_P(FirstPass, ChoosesAsASearchDoes) {
  const split_result r = split(random_system(300, 5, 0.3, GetParam()), {});
  std::vector<int> expected = first_pass_by_search(r.g, r.start);
  for (std::size_t i = 1; i < expected.size(); ++i) {
    const auto is_f = [&](int j) { return expected[static_cast<std::size_t>(j)] == -1; };
    if (expected[i] == -2 && std::none_of(r.g[i].begin(), r.g[i].end(), is_f)) expected[i] = 1;
  }

  EXPECT_EQ(r.states, expected);
  EXPECT_EQ(r.n.c, std::count(expected.begin() + 1, expected.end(), 1));
}

INSTANTIATE_TEST_SUITE_P(Seeds, FirstPass, testing::Range(1u, 6u));

TEST(Pcol, LowerNumberFirstAmongEquals) {
  const split_result r = split(five_point(2), {});  // a square, all measures 2
  EXPECT_EQ(r.states, (std::vector<int>{-2, 1, -1, -1, 1}));
}

TEST(Pcol, UnusableRowsAreForcedCOrFF) {
  sparse_system s = five_point(3);
  s.a[0] = -4.0;  // row 1
  for (const int iset : {0, 1}) {
    tier::pcol_options o;
    o.unusable_become_c = iset != 0;
    const split_result r = split(s, o);
    EXPECT_EQ(r.states[1], iset == 1 ? tier::state_c : tier::state_ff);
    EXPECT_EQ(r.n.fc, iset);
  }
}

TEST(Pcol, CountsNothingWithoutStrongCouplings) {
  sparse_system s;
  s.add_row(-1.0, {});
  s.add_row(1.0, {{1, 1.0}});
  EXPECT_EQ(split(s, {}).n.c, 0);
}

#ifdef _OPENMP
void expect_legal(const split_result& r) {
  for (int i = 1; i <= r.s.n; ++i) {
    const auto& row = r.g[static_cast<std::size_t>(i)];
    const auto has = [&](int state) {
      return std::any_of(row.begin(), row.end(),
                         [&](int j) { return r.states[static_cast<std::size_t>(j)] == state; });
    };
    const int state = r.states[static_cast<std::size_t>(i)];
    EXPECT_EQ(r.start[static_cast<std::size_t>(i)] == 0, state == tier::state_ff) << i;
    EXPECT_TRUE(state != tier::state_f || has(tier::state_c)) << i;
    EXPECT_TRUE(state != tier::state_undecided || has(tier::state_f)) << i;
  }
}

/// Every F row coupled with an F row of another block finds a C row that both depend on.
void expect_sound_borders(const split_result& r, int blocks) {
  const auto state = [&r](int i) { return r.states[static_cast<std::size_t>(i)]; };
  const auto block_of = [&](int i) {
    for (int b = 0;; ++b) {
      int lo = 1, hi = r.s.n;
      tier::chunk_of_thread(1, r.s.n, b, blocks, lo, hi);
      if (i <= hi) return b;
    }
  };
  for (int i = 1; i <= r.s.n; ++i) {
    const auto& row = r.g[static_cast<std::size_t>(i)];
    for (const int j : row) {
      if (state(i) != tier::state_f || state(j) != tier::state_f || block_of(i) == block_of(j)) continue;
      const auto& other = r.g[static_cast<std::size_t>(j)];
      const auto shared = [&](int l) {
        return state(l) == tier::state_c && std::find(other.begin(), other.end(), l) != other.end();
      };
      EXPECT_TRUE(std::any_of(row.begin(), row.end(), shared)) << i << ' ' << j;
    }
  }
}

// A grid numbered by lines has few couplings between blocks; a random graph is split as by one thread.
TEST(Pcol, BlocksOfRowsInThreads) {
  tier::pcol_options threaded;
  threaded.threads = true;
  omp_set_num_threads(3);
  tier::set_max_threads(1);

  const split_result grid = split(five_point(151), threaded), again = split(five_point(151), threaded);
  const split_result tangled = split(random_system(3000, 5, 0.3, 1), threaded);

  expect_legal(grid);
  expect_sound_borders(grid, 3);
  EXPECT_EQ(grid.states, again.states);
  EXPECT_NE(grid.states, split(five_point(151), {}).states) << "blocks were not used";
  EXPECT_NEAR(grid.n.ratio, 0.5, 0.02);
  EXPECT_EQ(tangled.states, split(random_system(3000, 5, 0.3, 1), {}).states);
}
#endif

}  // namespace
