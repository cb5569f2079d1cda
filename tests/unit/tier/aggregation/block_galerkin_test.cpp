// The parts of smoothed aggregation against dense arithmetic, formulas and hand-sized cases.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "support/tier/systems.h"
#include "tier/aggregation/aggregates.h"
#include "tier/aggregation/aggregation_setup.h"
#include "tier/aggregation/block_cycle.h"
#include "tier/aggregation/chebyshev.h"
#include "tier/aggregation/coupling_norms.h"
#include "tier/aggregation/diagonal_blocks.h"
#include "tier/aggregation/tentative.h"
#include "tier/codes/aggregation_data.h"
#include "tier/store/numbered.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;
using namespace tier::aggregation;

/// Dense matrices by columns.
struct dense {
  int rows, columns;
  tier::numbered_list<double> v;
  dense(int r, int c) : rows(r), columns(c), v(r * c) {}
  double& operator()(int i, int j) { return v[j * rows + i]; }
};

template <class T>
dense dense_of(const block_matrix<T>& a, int columns) {
  dense d(a.n * a.rows, columns);
  for (int i = 0; i < a.n; ++i)
    for (int k = a.start[i]; k < a.start[i + 1]; ++k)
      for (int c = 0; c < a.columns; ++c)
        for (int r = 0; r < a.rows; ++r)
          d(i * a.rows + r, a.column[k] * a.columns + c) = a.block(k)[c * a.rows + r];
  return d;
}

dense product(dense& a, dense& b, bool transposed = false) {
  dense c(transposed ? a.columns : a.rows, b.columns);
  const int inner = transposed ? a.rows : a.columns;
  for (int j = 0; j < c.columns; ++j)
    for (int i = 0; i < c.rows; ++i)
      for (int k = 0; k < inner; ++k) c(i, j) += (transposed ? a(k, i) : a(i, k)) * b(k, j);
  return c;
}

/// The hierarchy of a system, with its arrays kept.
struct made {
  sparse_system s;
  tier::hierarchy levels;
  aggregation_hierarchy h;
  explicit made(sparse_system system, int cycle = k_cycle) : s(std::move(system)) {
    set_first_level(levels, s);
    levels(1).npnts = s.ip.empty() ? 0 : *std::max_element(s.ip.begin(), s.ip.end());
    tier::controls c;
    c.nnu = s.n;
    c.nna = static_cast<int>(s.ja.size());
    c.nsys = s.nsys;
    c.isym = tier::symmetry::symmetric;
    c.has_ip = !s.ip.empty();
    tier::parm().nagg_points = 4;
    tier::parm().nagg_cycle = cycle;
    set_up(h, levels(1), c, tier::options_of_aggregation(c));
  }
};

struct sized {
  const char* name;
  sparse_system (*make)();
};
void PrintTo(const sized& c, std::ostream* out) { *out << c.name; }
const auto kinds = testing::Values(sized{"Block1", [] { return five_point(9); }},
                                   sized{"Block2", [] { return plane_stress(8, 5); }},
                                   sized{"Block3", [] { return coupled(five_point(6), 3, -0.05); }},
                                   sized{"Block5", [] { return coupled(five_point(6), 5, -0.05); }},
                                   sized{"Block6", [] { return coupled(five_point(6), 6, -0.05); }},
                                   sized{"Block12", [] { return coupled(five_point(5), 12, -0.05); }});
std::string name_of(const testing::TestParamInfo<sized>& test) { return test.param.name; }

class AggregationParts : public testing::TestWithParam<sized> {};
INSTANTIATE_TEST_SUITE_P(Sizes, AggregationParts, kinds, name_of);

TEST_P(AggregationParts, CoarseMatrixIsTheTripleProduct) {
  made m(GetParam().make());
  const int n = m.h.fine.unknowns();
  dense a(n, n);
  const point_layout& points = m.h.points;
  for (int r = 0; r < m.s.n; ++r)
    for (std::size_t k = position(m.s.ia[position(r + 1)]); k < position(m.s.ia[position(r + 2)]); ++k)
      a(points.place[r], points.place[m.s.ja[k] - 1]) += m.h.scale * m.s.a[k];
  ASSERT_GE(m.h.levels(), 2);
  const block_level<double>& coarse = m.h.coarse[0];
  dense p = dense_of(m.h.fine.p, coarse.unknowns()), ap = product(a, p), expected = product(p, ap, true),
        found = dense_of(coarse.a, coarse.unknowns());

  for (int j = 0; j < found.columns; ++j)
    for (int i = 0; i < found.rows; ++i) EXPECT_NEAR(found(i, j), expected(i, j), 1e-12) << i << " " << j;
}

std::vector<float> norms_of(const made& m, strength_measure measure) {
  from_zero<float> norm;
  coupling_norms(m.h.fine.a, m.h.fine.inverse, measure, norm);
  return {norm.data(), norm.data() + m.h.fine.a.blocks()};
}

// Each variable of a point has a unit of its own; they differ by factors up to 2^11.
TEST_P(AggregationParts, EnergyOfCouplingsHasNoUnits) {
  sparse_system in_units = GetParam().make();
  const auto unit = [&](int row) {
    const int variable = in_units.iu.empty() ? 0 : in_units.iu[static_cast<std::size_t>(row)] - 1;
    return std::exp2(variable % 12);
  };
  for (int r = 0; r < in_units.n; ++r)
    for (int k = in_units.ia[static_cast<std::size_t>(r)]; k < in_units.ia[static_cast<std::size_t>(r) + 1];
         ++k)
      in_units.a[static_cast<std::size_t>(k) - 1] *=
          unit(r) * unit(in_units.ja[static_cast<std::size_t>(k) - 1] - 1);
  const made plain(GetParam().make()), scaled(in_units);

  const auto expected = norms_of(plain, strength_measure::energy);
  EXPECT_THAT(norms_of(scaled, strength_measure::energy),
              testing::Pointwise(testing::FloatNear(1e-3f), expected));
  EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 0.1f);
}

TEST(CouplingNorms, OfNumbersAreTheirMagnitudes) {
  const made m(five_point(9));
  const float scale = m.h.fine.a.value[0];  // the levels hold a multiple of the matrix; its diagonal is 4
  const auto entries = norms_of(m, strength_measure::entries), energy = norms_of(m, strength_measure::energy);
  for (std::size_t k = 0; k < entries.size(); ++k) {
    const bool diagonal = entries[k] > 0.5f * scale;
    EXPECT_FLOAT_EQ(entries[k], diagonal ? scale : 0.25f * scale);
    EXPECT_FLOAT_EQ(energy[k], diagonal ? 1.0f : 0.25f);
  }
}

/// The preconditioner applied to unit-like vectors.
std::vector<double> preconditioned(aggregation_hierarchy& h, const std::vector<double>& r) {
  std::vector<double> z(r.size());
  precondition(h, r.data(), z.data());
  return z;
}

double inner(const std::vector<double>& x, const std::vector<double>& y) {
  double s = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) s += x[i] * y[i];
  return s;
}

TEST_P(AggregationParts, LinearCyclesAreSymmetricAndAllArePositive) {
  for (const int cycle : {v_cycle, w_cycle, k_cycle}) {
    made m(GetParam().make(), cycle);
    std::vector<double> x(static_cast<std::size_t>(m.s.n)), y(x);
    for (std::size_t i = 0; i < x.size(); ++i) {
      x[i] = std::sin(3.0 * static_cast<double>(i) + 1.0);
      y[i] = std::cos(static_cast<double>(i * i));
    }
    const auto mx = preconditioned(m.h, x), my = preconditioned(m.h, y);
    EXPECT_GT(inner(x, mx), 0.0) << cycle;
    EXPECT_GT(inner(y, my), 0.0) << cycle;
    const double scale = std::sqrt(inner(x, mx) * inner(y, my));
    if (cycle != k_cycle) {
      EXPECT_NEAR(inner(x, my), inner(y, mx), 1e-5 * scale) << cycle;
    }
  }
}

/// tridiag(-1, 2, -1) as a level of blocks 1 x 1.
block_level<double> level_of_line(int n) {
  block_level<double> l;
  l.a.n = n;
  l.a.rows = l.a.columns = 1;
  l.a.start.allocate(n + 1, "start", "test");
  l.a.column.allocate(3 * n - 2, "column", "test");
  l.a.value.allocate(3 * n - 2 + padding, 0.0, "value", "test");
  int k = 0;
  for (int i = 0; i < n; ++i) {
    l.a.start[i] = k;
    for (const int j : {i, i - 1, i + 1}) {
      if (j < 0 || j >= n) continue;
      l.a.column[k] = j;
      l.a.value[k++] = j == i ? 2.0 : -1.0;
    }
  }
  l.a.start[n] = k;
  l.inverse.allocate(n + padding, 0.5, "inverse", "test");
  for (auto* v : {&l.f, &l.x, &l.y, &l.d}) v->allocate(n + padding, 0.0, "vector", "test");
  return l;
}

double chebyshev(int degree, double x) {
  return std::abs(x) <= 1.0
             ? std::cos(degree * std::acos(x))
             : std::cosh(degree * std::acosh(std::abs(x))) * (x < 0 && degree % 2 == 1 ? -1.0 : 1.0);
}

TEST(Chebyshev, LeavesItsPolynomialOfAnEigenvector) {
  constexpr int n = 20;
  for (const int degree : {1, 2, 3, 4})
    for (const int k : {1, 7, 20}) {
      block_level<double> l = level_of_line(n);
      const double angle = k * std::numbers::pi / (n + 1), eigenvalue = 1.0 - std::cos(angle);
      const polynomial p{degree, 0.1, 2.0};
      const double theta = 1.05, delta = 0.95;
      const double left = chebyshev(degree, (theta - eigenvalue) / delta) / chebyshev(degree, theta / delta);
      for (int i = 0; i < n; ++i) l.f[i] = 2.0 * eigenvalue * std::sin((i + 1) * angle);

      smooth_from_zero(l, p);
      for (int i = 0; i < n; ++i) EXPECT_NEAR(l.x[i], (1.0 - left) * std::sin((i + 1) * angle), 1e-13);
      smooth(l, p);
      for (int i = 0; i < n; ++i) EXPECT_NEAR(l.x[i], (1.0 - left * left) * std::sin((i + 1) * angle), 1e-13);
    }
}

TEST(Chebyshev, FindsTheLargestEigenvalue) {
  std::vector<double> two(12, 2.0), minus(12, -1.0);
  EXPECT_NEAR(largest_of_tridiagonal(12, two.data(), minus.data()),
              2.0 + 2.0 * std::cos(std::numbers::pi / 13), 1e-5);
  block_level<double> l = level_of_line(200);
  const double true_one = 1.0 + std::cos(std::numbers::pi / 201), found = largest_eigenvalue(l);
  EXPECT_LE(found, true_one + 1e-5);
  EXPECT_GE(found, 0.95 * true_one);
}

// Columns 1, x and 2 - x over three rows of two points: the third is dependent.
TEST(Tentative, MakesDependentColumnsZero) {
  constexpr int b = 2, m = 3;
  from_zero<int> aggregate;
  aggregate.allocate(3, 0, "aggregate", "test");
  aggregate[2] = -1;
  near_null n, coarse;
  n.allocate(3 * b * m + padding, 7.0, "n", "test");
  dense before(2 * b, m);
  for (int i = 0; i < 2 * b; ++i) {
    const double x = i * i;
    before(i, 0) = 1.0;
    before(i, 1) = x;
    before(i, 2) = 2.0 - x;
    for (int j = 0; j < m; ++j) n[(i / b) * b * m + j * b + i % b] = before(i, j);
  }

  factor_by_aggregate(3, b, m, aggregate, 1, n, coarse);

  dense q(2 * b, m), r(m, m);
  for (int i = 0; i < 2 * b; ++i)
    for (int j = 0; j < m; ++j) q(i, j) = n[(i / b) * b * m + j * b + i % b];
  std::copy_n(coarse.data(), m * m, r.v.begin());
  dense again = product(q, r), unit = product(q, q, true);
  for (int i = 0; i < 2 * b; ++i)
    for (int j = 0; j < m; ++j) EXPECT_NEAR(again(i, j), before(i, j), 1e-13);
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < m; ++j) EXPECT_NEAR(unit(i, j), i == j && i < 2 ? 1.0 : 0.0, 1e-13);
  EXPECT_EQ(r(2, 2), 0.0);
  for (int k = 2 * b * m; k < 3 * b * m; ++k) EXPECT_EQ(n[k], 0.0);  // the point without aggregate
}

TEST(DiagonalBlocks, InvertAndTellWhatIsNotDefinite) {
  const double good[] = {4, 2, 2, 3}, indefinite[] = {1, 2, 2, 1};
  double inverse[4];
  EXPECT_TRUE(invert_block(2, good, inverse));
  EXPECT_THAT(inverse, testing::ElementsAre(testing::DoubleEq(0.375), testing::DoubleEq(-0.25),
                                            testing::DoubleEq(-0.25), testing::DoubleEq(0.5)));
  EXPECT_FALSE(invert_block(2, indefinite, inverse));
  double holed[] = {3, 0, 0, 0};
  complete_diagonal(2, holed);
  EXPECT_THAT(holed, testing::ElementsAre(3, 0, 0, 1.5));
}

/// Rows of a graph with couplings, and what the front makes of them.
struct graph {
  using row = std::vector<std::pair<int, float>>;
  from_zero<int> start, column, aggregate;
  from_zero<float> norm;
  int n, count = 0;

  graph(const std::vector<row>& rows, float diagonal) : n(static_cast<int>(rows.size())) {
    int entries = n, k = 0;
    for (const row& r : rows) entries += static_cast<int>(r.size());
    start.allocate(n + 1, 0, "start", "test");
    column.allocate(entries, "column", "test");
    norm.allocate(entries, "norm", "test");
    for (int i = 0; i < n; ++i) {
      column[k] = i;
      norm[k++] = diagonal;
      for (const auto& [j, v] : rows[static_cast<std::size_t>(i)]) {
        column[k] = j;
        norm[k++] = v;
      }
      start[i + 1] = k;
    }
    count = form_aggregates(n, start, column, norm, 0.08, aggregate);
  }
};

// Points 0 - 1 - ... - 8 in a row, then one without couplings, then a pair coupled to 8 too weakly.
TEST(Aggregates, FollowTheFront) {
  const graph g({{{1, 0.2f}},
                 {{0, 0.2f}, {2, 1}},
                 {{1, 1}, {3, 1}},
                 {{2, 1}, {4, 1}},
                 {{3, 1}, {5, 1}},
                 {{4, 1}, {6, 1}},
                 {{5, 1}, {7, 1}},
                 {{6, 1}, {8, 1}},
                 {{7, 1}, {10, 0.1f}},
                 {},
                 {{8, 0.1f}, {11, 1}},
                 {{10, 1}}},
                2.0f);

  EXPECT_EQ(g.count, 4);
  const std::vector<int> expected = {0, 0, 1, 1, 1, 2, 2, 2, 2, -1, 3, 3};
  EXPECT_EQ(std::vector<int>(g.aggregate.data(), g.aggregate.data() + 12), expected);
}

/// Squares with diagonals that alternate, m x m points: inner ones have four or eight neighbours.
std::vector<graph::row> alternating_squares(int m, float coupling) {
  std::vector<graph::row> rows;
  for (int y = 0; y < m; ++y)
    for (int x = 0; x < m; ++x) {
      graph::row& row = rows.emplace_back();
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          const bool inside = x + dx >= 0 && x + dx < m && y + dy >= 0 && y + dy < m;
          const bool diagonal = dx != 0 && dy != 0;
          if (inside && (dx != 0 || dy != 0) && (!diagonal || (x + y) % 2 == 0))
            row.emplace_back((y + dy) * m + x + dx, coupling);
        }
    }
  return rows;
}

// The limit of strength is 0.08. A point of four neighbours makes an aggregate of five where couplings are
// not far above it, as where they depend on the direction.
TEST(Aggregates, ArePointsOfManyNeighboursWithTheirsWhereMeshesAlternate) {
  constexpr int m = 40;
  const graph far(alternating_squares(m, 0.2f), 1.0f), near(alternating_squares(m, 0.1f), 1.0f);

  EXPECT_LE(far.count, m * m / 10);
  EXPECT_GE(near.count, m * m / 9);
}

}  // namespace
