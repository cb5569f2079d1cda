// Splitting against brute force that searches for the highest measure, on small random graphs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <map>

#include "support/tier/sparse_system.h"
#include "tier/setup/collect.h"
#include "tier/setup/pcol.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/reduce.h"
#include "tier/setup/rwsrt.h"
#include "tier/setup/second_pass.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;
using graph = std::vector<std::vector<int>>;  // [1..n] strong columns in the order of the sorted row

tier::couplings couplings_of(sparse_system& s) {
  return {
      s.n, tier::view<int>(s.ia.data()), tier::view<int>(s.ja.data()), tier::view<double>(s.a.data()), {}};
}

graph strong_graph(const tier::couplings& m) {
  graph g(static_cast<std::size_t>(m.n) + 1);
  for (int i = 1; i <= m.n; ++i)
    for (int p = m.ia[i] + 1; p <= m.last_strong(i); ++p) g[static_cast<std::size_t>(i)].push_back(m.ja[p]);
  return g;
}

/// State at the start: C where the row is unusable, FF without strong couplings, else undecided.
std::vector<int> first_states(const tier::couplings& m) {
  std::vector<int> states{-2};
  for (int i = 1; i <= m.n; ++i) {
    const int last = m.last_strong(i);
    states.push_back(last == 0 ? 1 : last == m.ia[i] ? 0 : -2);
  }
  return states;
}

/// The first pass by search: measures and waiting times in plain arrays.
class brute_force {
  const graph& g_;
  std::vector<int> state_;

 public:
  brute_force(const graph& g, const std::vector<int>& start)
      : g_(g), state_(start), measure_(g.size(), 0), entered_(g.size(), 0) {
    for (const auto& row : g)
      for (const int j : row) ++measure_[at(j)];
    for (std::size_t i = 1; i < g.size(); ++i)
      if (state_[i] == 1) choose(i);
    for (std::size_t i = 1; i < g.size(); ++i) entered_[i] = clock_++;
  }

  std::vector<int> run() {
    for (;;) {
      std::size_t best = 0;
      for (std::size_t i = 1; i < state_.size(); ++i) {
        if (state_[i] != -2 || measure_[i] == 0) continue;
        if (best == 0 || measure_[i] > measure_[best] ||
            (measure_[i] == measure_[best] && entered_[i] < entered_[best]))
          best = i;
      }
      if (best == 0) return state_;
      choose(best);
    }
  }

 private:
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  void touch(int l, int change) {
    if (state_[at(l)] != -2) return;
    measure_[at(l)] += change;
    if (std::find(changed_.begin(), changed_.end(), l) == changed_.end()) changed_.push_back(l);
  }
  void choose(std::size_t i) {
    changed_.clear();
    state_[i] = 1;
    for (std::size_t j = 1; j < g_.size(); ++j) {
      if (state_[j] != -2 || std::find(g_[j].begin(), g_[j].end(), static_cast<int>(i)) == g_[j].end())
        continue;
      state_[j] = -1;
      for (const int l : g_[j]) touch(l, 1);
    }
    for (const int j : g_[i]) touch(j, -1);
    for (auto l = changed_.rbegin(); l != changed_.rend(); ++l) entered_[at(*l)] = clock_++;
  }

  std::vector<int> measure_, entered_, changed_;
  int clock_ = 0;
};

std::vector<int> states_of(const tier::work_array<int>& state) {
  std::vector<int> v{0};
  for (std::int64_t i = 1; i <= state.size(); ++i) v.push_back(state[i]);
  v[0] = -2;
  return v;
}

struct split_result {
  sparse_system s;
  graph g;
  std::vector<int> start, states;
  tier::split_counts n;
};

split_result split(sparse_system s, const tier::pcol_options& o) {
  split_result r{std::move(s), {}, {}, {}, {}};
  const tier::couplings m = couplings_of(r.s);
  tier::rwsrt(m, {});
  r.g = strong_graph(m);
  r.start = first_states(m);
  tier::work_array<int> state;
  state.allocate(m.n, "state", "test");
  r.n = tier::pcol(m, o, state);
  r.states = states_of(state);
  return r;
}

class FirstPass : public testing::TestWithParam<unsigned> {};

TEST_P(FirstPass, ChoosesAsASearchDoes) {
  const split_result r = split(random_system(300, 5, 0.3, GetParam()), {});
  std::vector<int> expected = brute_force(r.g, r.start).run();
  for (std::size_t i = 1; i < expected.size(); ++i) {
    const auto is_f = [&](int j) { return expected[static_cast<std::size_t>(j)] == -1; };
    if (expected[i] == -2 && std::none_of(r.g[i].begin(), r.g[i].end(), is_f)) expected[i] = 1;
  }

  EXPECT_EQ(r.states, expected);
  EXPECT_EQ(r.n.c, std::count(expected.begin() + 1, expected.end(), 1));
}

// Two C-variables are neighbours by a strong coupling or `paths` ways over two; a search on that graph.
TEST_P(FirstPass, AggressiveCoarseningAsASearchDoes) {
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
    const std::vector<int> searched = brute_force(neighbours, start).run();
    for (std::size_t k = 1; k < c_variables.size(); ++k) {
      const bool dropped = state[c_variables[k]] == tier::state_reduced;
      reduced += dropped;
      EXPECT_EQ(dropped, searched[k] == -1) << "C-variable " << k;
    }
    EXPECT_EQ(r.n.reduced, reduced);
    EXPECT_GT(reduced, 0);
  }
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
    o.iset_vio_dd = iset;
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

// Four points of two unknowns; the second row of point 1 is unusable.
TEST(Collect, StatesOfPoints) {
  for (const bool force : {false, true}) {
    sparse_system s = coupled(five_point(2), 2, 0.0);
    tier::hierarchy h;
    set_first_level(h, s);
    tier::level& lv = h(1);
    tier::set_points(lv);
    lv.icg.allocate(lv.n, -1, "icg", "test");
    lv.icg[3] = 1;
    lv.ja[lv.ia[2]] = 0;

    tier::collect(lv, 1, force);

    const int first = force ? 1 : -1;
    EXPECT_EQ(states_of(lv.icg), (std::vector<int>{-2, first, first, 1, 1, -1, -1, -1, -1}));
  }
}

// Chain of five, states C F F XF C: the sums over fine neighbours are 1, 2, 1 against limits of 2c; a change
// counts for the rows behind it.
struct second_pass_case {
  double limit;
  std::vector<int> states;
};
class SecondPass : public testing::TestWithParam<second_pass_case> {};

TEST_P(SecondPass, SumOverFineNeighboursInRowOrder) {
  sparse_system s;
  for (int i = 1; i <= 5; ++i) {
    std::vector<std::pair<int, double>> others;
    if (i > 1) others.emplace_back(i - 1, -1.0);
    if (i < 5) others.emplace_back(i + 1, -1.0);
    s.add_row(2.0, others);
  }
  std::vector<int> state{1, -1, -1, -2, 1};
  tier::split_counts n;
  n.c = 2;
  n.f = 3;

  const int changed =
      tier::second_pass(couplings_of(s), GetParam().limit, 0, tier::view<int>(state.data()), n);

  EXPECT_EQ(state, GetParam().states);
  EXPECT_EQ(n.c, 2 + changed);
  EXPECT_EQ(n.f, 3 - changed);
}

INSTANTIATE_TEST_SUITE_P(Limits, SecondPass,
                         testing::Values(second_pass_case{1.0, {1, -1, -1, -2, 1}},
                                         second_pass_case{0.75, {1, -1, 1, -2, 1}},
                                         second_pass_case{0.4, {1, 1, 1, -2, 1}}));

}  // namespace
