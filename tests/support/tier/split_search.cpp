// Splits by search and by the library.
#include "support/tier/split_search.h"

#include <algorithm>

#include "tier/setup/rwsrt.h"

namespace testing_support {

tier::couplings couplings_of(sparse_system& s) {
  return {
      s.n, tier::view<int>(s.ia.data()), tier::view<int>(s.ja.data()), tier::view<double>(s.a.data()), {}};
}

namespace {

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

/// Measures and waiting times in plain arrays.
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

}  // namespace

std::vector<int> states_of(const tier::work_array<int>& state) {
  std::vector<int> v{0};
  for (std::int64_t i = 1; i <= state.size(); ++i) v.push_back(state[i]);
  v[0] = -2;
  return v;
}

std::vector<int> first_pass_by_search(const graph& g, const std::vector<int>& start) {
  return brute_force(g, start).run();
}

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

}  // namespace testing_support
