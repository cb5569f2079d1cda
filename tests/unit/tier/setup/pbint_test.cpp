// Block interpolation by hand.
#include "tier/setup/pbint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/tier/prepared_level.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;

// Points 1 (F), 2, 3 (C), 4 (weak), two unknowns: w_j = -s D^-1 A_1j with s = (3 norms) / (2 kept norms).
TEST(Pbint1, SolvesTheDiagonalBlock) {
  sparse_system s;
  s.nsys = 2;
  s.add_row(4.0, {{2, 1.0}, {3, -2.0}, {5, -2.0}, {7, -0.1}});
  s.add_row(3.0, {{1, 1.0}, {4, -2.0}, {6, -2.0}, {8, -0.1}});
  for (int i = 3; i <= 8; ++i) s.add_row(1.0, {});
  s.iu = {1, 2, 1, 2, 1, 2, 1, 2};
  s.ip = {1, 1, 2, 2, 3, 3, 4, 4};
  for (const int nwtint : {1, 4}) {
    prepared_level p(s, std::vector<int>{-1, -1, 1, 1, 1, 1, 1, 1});
    tier::block_options o;
    o.nprim = 1;
    o.kind = tier::interpolation_kind{nwtint};

    EXPECT_EQ(nwtint == 4 ? tier::pbint2(p.lv, o) : tier::pbint1(p.lv, o), 0);

    const double f = 4.1 / 4.0 * 2.0 / 11.0;  // inverse of [4 1; 1 3] is [3 -1; -1 4] / 11
    expect_row(p.weights(1), {{3, 3 * f}, {4, -f}, {5, 3 * f}, {6, -f}});
    expect_row(p.weights(2), {{3, -f}, {4, 4 * f}, {5, -f}, {6, 4 * f}});
  }
}

// A diagonal system in each unknown gives what the scalar interpolation gives, elimination included, when
// every row is the same for both unknowns.
TEST(Pbint1, EliminatesAsScalarRowsDo) {
  sparse_system scalar;
  scalar.add_row(2.0, {{2, -1.0}, {3, -1.0}});
  scalar.add_row(2.0, {{1, -1.0}, {4, -1.0}});
  scalar.add_row(2.0, {{1, -1.0}, {5, -1.0}});
  scalar.add_row(1.0, {});
  scalar.add_row(1.0, {});
  prepared_level p(coupled(scalar, 2, 0.0), std::vector<int>{-1, -1, -1, -1, -1, -1, 1, 1, 1, 1});
  tier::block_options o;
  o.nprim = 1;
  o.kind = tier::interpolation_kind::standard;

  tier::pbint1(p.lv, o);

  expect_row(p.weights(1), {{7, 0.5}, {8, 0.0}, {9, 0.5}, {10, 0.0}});
  expect_row(p.weights(2), {{7, 0.0}, {8, 0.5}, {9, 0.0}, {10, 0.5}});
}

// Points 1 to 4, two unknowns at each: 1 is C, 1 and 2 couple, and so do 3 and 4. `change` spoils that.
struct fault_case {
  const char* name;
  int nwtint;
  std::function<void(sparse_system&, tier::block_options&)> change;
  const char* message;
};
class PbintFaults : public testing::TestWithParam<fault_case> {};

TEST_P(PbintFaults, EndTheCall) {
  sparse_system scalar;
  scalar.add_row(2.0, {{2, -1.0}});
  scalar.add_row(2.0, {{1, -1.0}});
  scalar.add_row(2.0, {{4, -1.0}});
  scalar.add_row(2.0, {{3, -1.0}});
  sparse_system s = coupled(scalar, 2, 0.1);
  tier::block_options o;
  o.nprim = 1;
  o.kind = tier::interpolation_kind{GetParam().nwtint};
  GetParam().change(s, o);
  prepared_level p(s, std::vector<int>{1, 1, -1, -1, -1, -1, -1, -1});
  tier::parm().mode_mess = -3;

  int ierr = 0;
  try {
    o.kind == tier::interpolation_kind::multipass ? tier::pbint2(p.lv, o) : tier::pbint1(p.lv, o);
  } catch (const tier::failure& e) {
    ierr = e.ierr;
  }

  EXPECT_EQ(ierr, 140);
  EXPECT_THAT(tier::last_fault(), testing::HasSubstr(GetParam().message));
}

/// The block of a point becomes [2 2; 2 2].
void make_singular(sparse_system& s, int point) {
  for (int i = 2 * point - 1; i <= 2 * point; ++i)
    for (std::size_t p = position(s.ia[position(i)]); p < position(s.ia[position(i + 1)]); ++p)
      if (s.ip[position(s.ja[p])] == point) s.a[p] = 2.0;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PbintFaults,
    testing::Values(
        fault_case{"NobodyReached", 4, [](sparse_system&, tier::block_options&) {},
                   "Deadlock encountered with nrest=2 in (pbint2)! nempty,nfpnts,ncpnts= 0 3 1"},
        fault_case{"NoPrimaryUnknown", 4, [](sparse_system&, tier::block_options& o) { o.nprim = 0; },
                   "nprim=0 in (pbint2)"},
        fault_case{"PrimaryUnknownNotOnPoint", 1, [](sparse_system&, tier::block_options& o) { o.nprim = 3; },
                   "nprim not found on current point (pbint1)!"},
        fault_case{"SingularPoint", 1, [](sparse_system& s, tier::block_options&) { make_singular(s, 2); },
                   "Problems with gdec8/gsol8 in (pbint1)"},
        fault_case{"SingularNeighbour", 2,
                   [](sparse_system& s, tier::block_options&) { make_singular(s, 4); },
                   "Problems with gdec8/gsol8 in (pbint1)"},
        fault_case{"EliminationNotAllowed", 2,
                   [](sparse_system&, tier::block_options& o) { o.may_eliminate = false; },
                   "eelim=.true. but allow_elim.ne.1 in (pbint1)"}),
    [](const auto& i) { return i.param.name; });

}  // namespace
