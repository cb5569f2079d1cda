// Classification and sorting of rows by hand-sized cases, and threads against one thread.
#include "tier/setup/rwsrt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "support/tier/sparse_system.h"
#include "tier/store/threads.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;

tier::couplings couplings_of(sparse_system& s) {
  return {s.n, tier::view<int>(s.ia.data()), tier::view<int>(s.ja.data()), tier::view<double>(s.a.data()),
          s.iu.empty() ? tier::view<int>() : tier::view<int>(s.iu.data())};
}

/// Row 1 of a system of 6 whose other rows are diagonal; strong columns in their order, and the code in the
/// diagonal's slot: 1 strong couplings, 0 none, -1 unusable.
struct row_case {
  const char* name;
  int type;
  std::vector<double> values;  // a_12, a_13, ...; the diagonal is 1
  std::vector<int> strong;
  int code;
  double ecg1 = 0.01;
};

class RwsrtRow : public testing::TestWithParam<row_case> {};

TEST_P(RwsrtRow, StrongColumnsInOrder) {
  const row_case& c = GetParam();
  sparse_system s;
  std::vector<std::pair<int, double>> others;
  for (std::size_t k = 0; k < c.values.size(); ++k) others.emplace_back(static_cast<int>(k) + 2, c.values[k]);
  s.add_row(1.0, others);
  for (int i = 2; i <= 6; ++i) s.add_row(1.0, {});
  tier::strength_options o;
  o.kind = tier::strong_kind{c.type};
  o.ecg1 = c.ecg1;

  const tier::strength_counts n = tier::rwsrt(couplings_of(s), o);

  const int last = s.ja[0];
  EXPECT_EQ(last > 1 ? 1 : last == 1 ? 0 : -1, c.code);
  const std::vector<int> strong(s.ja.begin() + 1, s.ja.begin() + std::max(1, last));
  EXPECT_EQ(strong, c.strong);
  EXPECT_EQ(n.strong, static_cast<int>(c.strong.size()));
  for (std::size_t p = 1; p <= c.values.size(); ++p)
    EXPECT_EQ(s.a[p], c.values[static_cast<std::size_t>(s.ja[p]) - 2]) << "value left its column";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RwsrtRow,
    testing::Values(row_case{"AllEqualFirstStandsFirst", 1, {-1, -1, -1}, {2, 3, 4}, 1},
                    row_case{
                        "LargestFirstGapsFilledFromTheEnd", 1, {-0.1, -0.5, -1, -0.1, -0.5}, {4, 3, 6}, 1},
                    row_case{"ExactlyTheThresholdIsStrong", 1, {-1, -0.25, -0.24}, {2, 3}, 1},
                    row_case{"DominatedRow", 1, {-0.005, -0.005}, {}, 0},
                    row_case{"NoDominanceLimit", 1, {-0.005, -0.005}, {2, 3}, 1, 0.0},
                    row_case{"OnlyPositiveType1", 1, {1, 0.5}, {}, -1},
                    row_case{"OnlyPositiveType2", 2, {0.5, 1, 0.25, 0.2}, {3, 2, 4}, 1},
                    row_case{"OnlyPositiveType4", 4, {1, 0.5}, {}, -1},
                    row_case{"OnlyPositiveType5", 5, {0.5, 1}, {3, 2}, 1},
                    row_case{"PositiveOfExactlyTheLimitIgnored", 3, {-1, 0.2}, {2}, 1},
                    row_case{"EliminationOfADiagonalRowChangesNothing", 3, {-1, 0.3}, {2}, 1}),
    [](const auto& c) { return std::string(c.param.name); });

// Column 4 is positive and couples 2 strongly: its elimination takes the weight of column 2 away.
//   1  -1  -0.9  0.5          r(2) = -1 + 0.5 * 1.9 = -0.05, r(3) = -0.9
TEST(Rwsrt, EliminationWeakensAColumn) {
  for (const int type : {3, 4, 5}) {
    sparse_system s;
    s.add_row(1.0, {{2, -1.0}, {3, -0.9}, {4, 0.5}});
    s.add_row(1.0, {});
    s.add_row(1.0, {});
    s.add_row(1.0, {{2, -1.9}});
    tier::strength_options o;
    o.kind = tier::strong_kind{type};

    const tier::strength_counts n = tier::rwsrt(couplings_of(s), o);

    EXPECT_THAT(std::vector<int>(s.ja.begin(), s.ja.begin() + 4), ElementsAre(2, 3, 2, 4));
    EXPECT_EQ(n.eliminated, 1);
    EXPECT_EQ(n.ineffective, 0);
  }
}

// With a_42 = -3 and a_43 = -3 nothing negative is left: type 3 gives the row up, type 4 takes it as it is.
TEST(Rwsrt, FailedElimination) {
  for (const int type : {3, 4}) {
    sparse_system s;
    s.add_row(1.0, {{2, -1.0}, {3, -0.9}, {4, 0.5}});
    s.add_row(1.0, {});
    s.add_row(1.0, {});
    s.add_row(1.0, {{2, -3.0}, {3, -3.0}});
    tier::strength_options o;
    o.kind = tier::strong_kind{type};

    const tier::strength_counts n = tier::rwsrt(couplings_of(s), o);

    EXPECT_EQ(n.failed, 1);
    EXPECT_EQ(s.ja[0], type == 3 ? 0 : 3);
  }
}

TEST(Rwsrt, OtherFunctionsDoNotCouple) {
  sparse_system s;
  s.add_row(1.0, {{2, -1.0}, {3, -1.0}});
  s.add_row(1.0, {{1, -1.0}});
  s.add_row(-1.0, {{1, -1.0}});
  s.iu = {1, 2, 1};

  const tier::strength_counts n = tier::rwsrt(couplings_of(s), {});

  EXPECT_THAT(std::vector<int>({s.ja[0], s.ja[1], s.ja[3], s.ja[5]}), ElementsAre(2, 3, 4, 0));
  EXPECT_EQ(n.diagdom, 1);
  EXPECT_EQ(n.nonpositive, 1);
}

#ifdef _OPENMP
TEST(Rwsrt, SameBitsForAnyTeam) {
  for (const int type : {1, 4}) {
    const sparse_system original = random_system(4000, 12, 0.3, 7);
    sparse_system serial = original, threaded = original;
    tier::strength_options o;
    o.kind = tier::strong_kind{type};
    tier::set_max_threads(1000);
    const tier::strength_counts one = tier::rwsrt(couplings_of(serial), o);
    omp_set_num_threads(3);
    tier::set_max_threads(1);

    const tier::strength_counts three = tier::rwsrt(couplings_of(threaded), o);

    EXPECT_EQ(serial.ja, threaded.ja);
    EXPECT_EQ(serial.a, threaded.a);
    EXPECT_EQ(one.strong, three.strong);
    EXPECT_EQ(one.ineffective, three.ineffective);
    EXPECT_EQ(one.all_dominated, three.all_dominated);
  }
}
#endif

}  // namespace
