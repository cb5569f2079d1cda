// Galerkin products of all variants against explicit triple products.
#include "tier/setup/opdfn.h"

#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

#include "support/tier/sparse_system.h"
#include "tier/setup/pcol.h"
#include "tier/setup/prepare_opdfn.h"
#include "tier/setup/pwint_aa.h"
#include "tier/setup/rwsrt.h"
#include "tier/setup/weight_assembly.h"
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

}  // namespace
