// Aggressive coarsening against a search on the graph of coarse variables.
#include "tier/setup/reduce.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "support/tier/split_search.h"
#include "tier/setup/rwsrt.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/work_arrays.h"

namespace {

using namespace testing_support;

class Reduce : public testing::TestWithParam<unsigned> {};

// Two C-variables are neighbours by a strong coupling or `paths` ways over two; a search on that graph.
TEST_P(Reduce, AggressiveCoarseningAsASearchDoes) {
  for (const int paths : {1, 2}) {
    split_result r = split(random_system(300, 5, 0.3, GetParam()), {});
    std::vector<int> c_variables{0};
    for (int i = 1; i <= r.s.n; ++i)
      if (r.states[static_cast<std::size_t>(i)] > 0) c_variables.push_back(i);
    std::map<int, int> number;
    for (std::size_t k = 1; k < c_variables.size(); ++k) number[c_variables[k]] = static_cast<int>(k);
    graph neighbours(c_variables.size());
    for (std::size_t k = 1; k < c_variables.size(); ++k) {
      std::map<int, int> ways;
      std::vector<int> order;
      const auto add = [&](int j, int count) {
        if (number.count(j) == 0 || j == c_variables[k]) return;
        const bool known = ways[j] >= paths;
        ways[j] += count;
        if (!known && ways[j] >= paths) neighbours[k].push_back(number[j]);
      };
      const auto& row = r.g[static_cast<std::size_t>(c_variables[k])];
      for (const int j : row) add(j, paths);
      for (const int between : row)
        for (const int j : r.g[static_cast<std::size_t>(between)]) add(j, 1);
    }
    std::vector<int> start;
    for (const auto& row : neighbours) start.push_back(row.empty() ? 1 : -2);
    tier::work_array<int> state;
    state.allocate(r.s.n, "state", "test");
    for (int i = 1; i <= r.s.n; ++i) state[i] = r.states[static_cast<std::size_t>(i)];
    tier::reduce_options o;
    o.paths = paths;

    tier::reduce(couplings_of(r.s), o, state, r.n);

    int reduced = 0;
    const std::vector<int> searched = first_pass_by_search(neighbours, start);
    for (std::size_t k = 1; k < c_variables.size(); ++k) {
      const bool dropped = state[c_variables[k]] == tier::state_reduced;
      reduced += dropped;
      EXPECT_EQ(dropped, searched[k] == -1) << "C-variable " << k;
    }
    EXPECT_EQ(r.n.reduced, reduced);
    EXPECT_GT(reduced, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Reduce, testing::Range(1u, 6u));

// All leaves of a hub are two strong steps from each other. Their graph would grow with the square of the
// hub.
TEST(Reduce, SkipsAHubWhoseLeavesAreAllNeighbours) {
  constexpr int leaves = 3000;
  sparse_system star;
  std::vector<std::pair<int, double>> all;
  for (int i = 1; i <= leaves; ++i) {
    star.add_row(1.0, {{leaves + 1, -1.0}});
    all.emplace_back(i, -1.0);
  }
  star.add_row(leaves, all);
  tier::hierarchy h;
  set_first_level(h, star);
  tier::rwsrt(tier::couplings_of(h(1), false), {});
  tier::work_array<int> state;
  state.allocate(star.n, 1, "state", "test");
  state[star.n] = tier::state_f;
  tier::split_counts n;
  n.c = leaves;
  const std::int64_t before = tier::memory().memi = tier::memory().nisum;
  tier::reduce_options o;
  o.paths = 1;

  tier::reduce(tier::couplings_of(h(1), false), o, state, n);

  EXPECT_EQ(n.c, leaves);
  EXPECT_EQ(n.reduced, 0);
  EXPECT_LT(tier::memory().memi - before, 100 * leaves);
}

}  // namespace
