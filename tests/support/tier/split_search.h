// The first pass of a splitting by search, and splits of small systems that it is held against. Used by the
// tests of the splitting.
#pragma once

#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/setup/pcol.h"

namespace testing_support {

using graph = std::vector<std::vector<int>>;  // [1..n] strong columns in the order of the sorted row

tier::couplings couplings_of(sparse_system& s);

/// States as the search gives them: [1..n], -2 in front.
std::vector<int> states_of(const tier::work_array<int>& state);

/// The first pass by search for the highest measure and the longest wait, in plain arrays.
std::vector<int> first_pass_by_search(const graph& g, const std::vector<int>& start);

struct split_result {
  sparse_system s;
  graph g;
  std::vector<int> start, states;  // before and after the first pass, [1..n]
  tier::split_counts n;
};

/// Sorts the rows by strength and runs the first pass.
split_result split(sparse_system s, const tier::pcol_options& o);

}  // namespace testing_support
