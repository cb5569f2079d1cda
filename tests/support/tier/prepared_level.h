// A level that is ready for interpolation, and its rows of weights. Used by the tests of the interpolation.
#pragma once

#include <utility>
#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/setup/rwsrt.h"
#include "tier/store/hierarchy.h"

namespace testing_support {

using row = std::vector<std::pair<int, double>>;  // column, weight

/// A level with sorted rows and given states.
struct prepared_level {
  sparse_system s;
  tier::hierarchy h;
  tier::level& lv = h(1);

  prepared_level(sparse_system system, const tier::strength_options& o);
  prepared_level(sparse_system system, const std::vector<int>& states,
                 const tier::strength_options& o = tier::strength_options());
  void split();
  row weights(int i) const;
  double row_sum(int i) const;
};

/// The same columns in the same order, weights to rounding.
void expect_row(const row& actual, const row& expected);

}  // namespace testing_support
