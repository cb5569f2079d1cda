// Levels before interpolation.
#include "support/tier/prepared_level.h"

#include <gtest/gtest.h>

#include "tier/setup/pcol.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/weight_assembly.h"

namespace testing_support {

prepared_level::prepared_level(sparse_system system, const tier::strength_options& o) : s(std::move(system)) {
  set_first_level(h, s);
  tier::rwsrt(tier::couplings_of(lv, s.nsys > 1), o);
  lv.icg.allocate(lv.n, "icg", "test");
  if (s.nsys > 1) tier::set_points(lv);
}

prepared_level::prepared_level(sparse_system system, const std::vector<int>& states,
                               const tier::strength_options& o)
    : prepared_level(std::move(system), o) {
  for (int i = 1; i <= lv.n; ++i) lv.icg[i] = states[position(i)];
}

void prepared_level::split() { tier::pcol(tier::couplings_of(lv, s.nsys > 1), {}, lv.icg); }

row prepared_level::weights(int i) const {
  row r;
  for (int p = lv.iw[i]; p < lv.iw[i + 1]; ++p) r.emplace_back(lv.jw[p], lv.w[p]);
  return r;
}

double prepared_level::row_sum(int i) const {
  double sum = 0.0;
  for (const auto& [column, w] : weights(i)) sum += w;
  return sum;
}

void expect_row(const row& actual, const row& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t k = 0; k < actual.size(); ++k) {
    EXPECT_EQ(actual[k].first, expected[k].first);
    EXPECT_NEAR(actual[k].second, expected[k].second, 1e-14);
  }
}

}  // namespace testing_support
