// Truncation of coarse matrices.
#include "tier/setup/galerkin_truncate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;

tier::level level_of(const sparse_system& s) {
  tier::level lv;
  lv.n = s.n;
  lv.own_ia.allocate(s.n + 1, "ia", "test");
  lv.own_ja.allocate(static_cast<int>(s.ja.size()), "ja", "test");
  lv.own_a.allocate(static_cast<int>(s.a.size()), "a", "test");
  std::copy(s.ia.begin(), s.ia.end(), lv.own_ia.data());
  std::copy(s.ja.begin(), s.ja.end(), lv.own_ja.data());
  std::copy(s.a.begin(), s.a.end(), lv.own_a.data());
  lv.ia = lv.own_ia;
  lv.ja = lv.own_ja;
  lv.a = lv.own_a;
  return lv;
}

struct truncation_case {
  const char* name;
  double a12, a21;  // beside a_13 = a_31 = -1, diagonals 2
  bool by_rows;
  std::vector<int> lengths;         // of the rows left; empty: ierr 152
  std::vector<double> diagonals{};  // of them
};
class Truncation : public testing::TestWithParam<truncation_case> {};

TEST_P(Truncation, DropsOntoTheDiagonal) {
  const truncation_case& c = GetParam();
  sparse_system s;
  s.add_row(2.0, {{2, c.a12}, {3, -1.0}});
  s.add_row(2.0, c.a21 == 0.0 ? std::vector<std::pair<int, double>>{}
                              : std::vector<std::pair<int, double>>{{1, c.a21}});
  s.add_row(2.0, {{1, -1.0}});
  tier::level lv = level_of(s);
  tier::parm().mode_mess = -3;

  int ierr = 0;
  try {
    tier::galerkin_truncate(lv, 0.1, c.by_rows);
  } catch (const tier::failure& e) {
    ierr = e.ierr;
  }

  ASSERT_EQ(ierr, c.lengths.empty() ? 152 : 0);
  for (std::size_t i = 1; i <= c.lengths.size(); ++i) {
    const int row = static_cast<int>(i);
    EXPECT_EQ(lv.ia[row + 1] - lv.ia[row], c.lengths[i - 1]);
    EXPECT_DOUBLE_EQ(lv.a[lv.ia[row]], c.diagonals[i - 1]);
    EXPECT_EQ(lv.ja[lv.ia[row]], row);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Truncation,
    testing::Values(truncation_case{"AtTheLimitGoes", -0.2, -0.2, true, {2, 1, 2}, {1.8, 1.8, 2}},
                    truncation_case{"EachRowByItself", -0.1, -1.0, true, {2, 2, 2}, {1.9, 2, 2}},
                    truncation_case{"CounterpartGoesToo", -0.1, -1.0, false, {2, 1, 2}, {1.9, 1, 2}},
                    truncation_case{"CounterpartMissing", -0.1, 0.0, false, {}},
                    truncation_case{"DiagonalUsedUp", -0.1, -2.5, false, {}},
                    truncation_case{"NothingLeftOfTheDiagonal", -0.1, -2.0, false, {}}),
    [](const auto& c) { return std::string(c.param.name); });

}  // namespace
