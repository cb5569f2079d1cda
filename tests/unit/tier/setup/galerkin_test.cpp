// Galerkin products against explicit triple products, truncation and repair.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <cmath>
#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/setup/correct.h"
#include "tier/setup/galerkin_step.h"
#include "tier/setup/galerkin_truncate.h"
#include "tier/setup/opdfn.h"
#include "tier/setup/pcol.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/pwint_aa.h"
#include "tier/setup/rwsrt.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;

/// Level 1 with its interpolation, level 2 laid out.
struct two_levels {
  sparse_system s;
  tier::hierarchy h;

  two_levels(sparse_system system, int functions) : s(std::move(system)) {
    s.nsys = functions;
    for (int i = 0; i < s.n; ++i) s.iu.push_back(i % functions + 1);
    set_first_level(h, s);
    tier::level& lv = h(1);
    tier::rwsrt(tier::couplings_of(lv, false), {});
    lv.icg.allocate(lv.n, "icg", "test");
    tier::pcol(tier::couplings_of(lv, false), {}, lv.icg);
    tier::pwint1_aa(lv, {}, false, false);
    tier::restore_diagonals(lv.n, lv.ia, lv.ja);
    tier::prepare_opdfn(lv, h(2));
  }
};

using sparse_row = std::vector<std::pair<int, double>>;

/// Row c of R A P: the diagonal, then columns in the order of their appearance, products added one by one.
sparse_row triple_product(const tier::level& fine, int c) {
  sparse_row row{{c, 0.0}};
  const auto add = [&row](int column, double v) {
    for (auto& [m, sum] : row)
      if (m == column) return void(sum += v);
    row.emplace_back(column, v);
  };
  for (int t = fine.rt[c]; t < fine.rt[c + 1]; ++t)
    for (int p = fine.ia[fine.jrt[t]]; p < fine.ia[fine.jrt[t] + 1]; ++p)
      for (int q = fine.iw[fine.ja[p]]; q < fine.iw[fine.ja[p] + 1]; ++q)
        add(fine.jw[q], fine.w[q] * (fine.wrt[t] * fine.a[p]));
  return row;
}

class Galerkin : public testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(Galerkin, EqualsTheTripleProductInEveryVariant) {
  const auto [variant, threads, functions] = GetParam();
#ifdef _OPENMP
  omp_set_num_threads(threads);
#endif
  tier::set_max_threads(1000);
  two_levels t(random_system(8000, 6, 0.1, 11), functions);
  tier::opdfn(t.h(1), t.h(2), tier::opdfn_variant::detrlen, false);
  tier::level reference = std::move(t.h(2));
  t.h(2) = tier::level();
  t.h(2).n = reference.n;
  tier::set_max_threads(1);

  tier::opdfn(t.h(1), t.h(2), static_cast<tier::opdfn_variant>(variant), false);

  const tier::level& coarse = t.h(2);
  ASSERT_EQ(coarse.entries(), reference.entries());
  const auto entries = static_cast<std::size_t>(coarse.entries());
  EXPECT_EQ(std::memcmp(coarse.ja.data(), reference.ja.data(), entries * sizeof(int)), 0);
  EXPECT_EQ(std::memcmp(coarse.a.data(), reference.a.data(), entries * sizeof(double)), 0);
  EXPECT_EQ(coarse.own_ja.size(), coarse.entries());
  // Of several functions each product is added by itself; one function's rows of R A are summed up first.
  const double tolerance = functions > 1 ? 0.0 : 1e-13;
  for (int c = 1; c <= coarse.n; ++c) {
    const sparse_row expected = triple_product(t.h(1), c);
    ASSERT_EQ(coarse.ia[c + 1] - coarse.ia[c], static_cast<int>(expected.size()));
    for (int p = coarse.ia[c]; const auto& [column, value] : expected) {
      ASSERT_EQ(coarse.ja[p], column);
      ASSERT_NEAR(coarse.a[p], value, tolerance);
      ++p;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Variants, Galerkin,
                         testing::Combine(testing::Range(1, 7), testing::Values(1, 3),
                                          testing::Values(1, 2)));

// Identity interpolation, a stored zero at (1, 2): it makes an entry when zeros are kept.
TEST(Opdfn, StoredZeros) {
  for (const auto& [keep, variant, functions] :
       {std::tuple{false, 1, 1}, {false, 2, 2}, {false, 6, 2}, {true, 1, 2}, {true, 2, 1}, {true, 6, 1}}) {
    sparse_system s;
    s.nsys = functions;
    s.iu = {1, functions};
    s.add_row(1.0, {{2, 0.0}});
    s.add_row(1.0, {{1, -1.0}});
    tier::hierarchy h;
    set_first_level(h, s);
    h(1).icg.allocate(2, 1, "icg", "test");
    h(1).iw.allocate(3, 0, "iw", "test");
    h(1).jw.allocate(2, 0, "jw", "test");
    h(1).w.allocate(2, 1.0, "w", "test");
    for (int i = 1; i <= 3; ++i) h(1).iw[i] = i;
    for (int i = 1; i <= 2; ++i) h(1).jw[i] = i;
    tier::prepare_opdfn(h(1), h(2));

    tier::opdfn(h(1), h(2), static_cast<tier::opdfn_variant>(variant), keep);

    EXPECT_EQ(h(2).entries(), keep ? 4 : 3);
  }
}

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
                    truncation_case{"DiagonalUsedUp", -0.1, -2.5, false, {}}),
    [](const auto& c) { return std::string(c.param.name); });

// P = [1 0; 0 1; -3 1.5] and A = diag(1, 1, d) with a_13 = a_31 = c: A_c(1,1) = 1 - 6c + 9d.
struct repair_case {
  const char* name;
  double w1, d, c;
  int maxop_restart;
  std::vector<double> expected;  // F row's weights afterwards; empty: ierr 100
};
class Repair : public testing::TestWithParam<repair_case> {};

TEST_P(Repair, MakesDiagonalsPositive) {
  const repair_case& c = GetParam();
  sparse_system s;
  s.add_row(1.0, {{3, c.c}});
  s.add_row(1.0, {});
  s.add_row(c.d, {{1, c.c}});
  tier::hierarchy h;
  set_first_level(h, s);
  tier::level& lv = h(1);
  lv.icg.allocate(3, 1, "icg", "test");
  lv.icg[3] = -1;
  lv.iw.allocate(4, 0, "iw", "test");
  lv.jw.allocate(4, 0, "jw", "test");
  lv.w.allocate(4, 1.0, "w", "test");
  const std::vector<int> iw{1, 2, 3, 5}, jw{1, 2, 1, 2};
  std::copy(iw.begin(), iw.end(), lv.iw.data());
  std::copy(jw.begin(), jw.end(), lv.jw.data());
  lv.w[3] = c.w1;
  lv.w[4] = 1.5;
  tier::prepare_opdfn(lv, h(2));
  tier::controls controls;
  controls.ntyp_galerkin = 2;
  tier::parm().maxop_restart = c.maxop_restart;
  tier::parm().mode_mess = -3;

  int ierr = 0;
  try {
    tier::form_operator(h, 1, controls);
  } catch (const tier::failure& e) {
    ierr = e.ierr;
  }

  ASSERT_EQ(ierr, c.expected.empty() ? 100 : 0);
  if (ierr != 0) return;
  ASSERT_EQ(lv.iw[4] - lv.iw[3], static_cast<int>(c.expected.size()));
  for (int k = 0; k < lv.iw[4] - lv.iw[3]; ++k)
    EXPECT_DOUBLE_EQ(lv.w[lv.iw[3] + k], c.expected[static_cast<std::size_t>(k)]);
  EXPECT_EQ(lv.rt[3] - 1, lv.iw[4] - 1) << "the transpose follows";
  for (int i = 1; i <= 2; ++i) EXPECT_GT(h(2).a[h(2).ia[i]], 0.0);
}

INSTANTIATE_TEST_SUITE_P(Cases, Repair,
                         testing::Values(repair_case{"GoodStays", -0.5, 1.0, 0.1, 2, {-0.5, 1.5}},
                                         repair_case{
                                             "NegativeWeightGoesRowSumStays", -0.5, 1.0, 1.3, 2, {1.0}},
                                         repair_case{"PositiveWeightIsHalved", 1.0, 0.1, -0.6, 2, {0.5, 1.5}},
                                         repair_case{"GivesUp", 8.0, 0.0001, -0.9, 1, {}}),
                         [](const auto& c) { return std::string(c.param.name); });

}  // namespace
