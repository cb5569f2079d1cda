// Block interpolation by hand.
#include "tier/setup/pbint.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/tier/prepared_level.h"

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
    o.nwtint = nwtint;

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
  o.nwtint = 2;

  tier::pbint1(p.lv, o);

  expect_row(p.weights(1), {{7, 0.5}, {8, 0.0}, {9, 0.5}, {10, 0.0}});
  expect_row(p.weights(2), {{7, 0.0}, {8, 0.5}, {9, 0.0}, {10, 0.5}});
}

}  // namespace
