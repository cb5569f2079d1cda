// The order of set-up.
#include "tier/aggregation/aggregation_setup.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "tier/aggregation/aggregates.h"
#include "tier/aggregation/block_galerkin.h"
#include "tier/aggregation/chebyshev.h"
#include "tier/aggregation/coupling_norms.h"
#include "tier/aggregation/diagonal_blocks.h"
#include "tier/aggregation/mode_repair.h"
#include "tier/aggregation/near_null.h"
#include "tier/aggregation/prolongator.h"
#include "tier/aggregation/row_sources.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/row_loop.h"
#include "tier/store/timers.h"

namespace tier::aggregation {

namespace {

constexpr const char* routine = "aggregation_setup";
constexpr int largest_dense = 3000;  // rows of a last level that are factored
constexpr double least_shrinking = 0.8;

template <class T>
void allocate_vectors(block_level<T>& l, bool inner_steps) {
  const std::int64_t size = std::int64_t{l.unknowns()} + padding;
  for (from_zero<T>* v : {&l.f, &l.x, &l.y, &l.d}) v->allocate(size, T(0), "vectors", routine);
  if (!inner_steps) return;
  l.direction.allocate(size, T(0), "vectors", routine);
  l.product.allocate(size, T(0), "vectors", routine);
}

/// Pattern of the caller's matrix in blocks.
void lay_out_blocks(block_matrix<float>& a, caller_rows& rows, const point_layout& points) {
  a.n = points.points;
  a.rows = a.columns = points.block;
  a.start.allocate(a.n + 1, 0, "start", routine);
  for_chunks(a.n, block_team(a.n), [&](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i) a.start[i + 1] = rows.columns(i, c.tid, nullptr);
  });
  for (int i = 0; i < a.n; ++i) {
    require_in_range(std::int64_t{a.start[i]} + a.start[i + 1] < max_entries, "nna");
    a.start[i + 1] += a.start[i];
  }
  a.column.allocate(a.blocks(), "column", routine);
  for_chunks(a.n, block_team(a.n), [&](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i) rows.columns(i, c.tid, &a.column[a.start[i]]);
  });
  a.allocate_blocks("a", routine);
}

/// Values of level 1 in single precision and inverted diagonal blocks. Returns the first point whose block
/// isn't positive definite, -1 if there is none.
int fill_fine_level(block_level<float>& l, block_rows& source) {
  const block_matrix<float>& a = l.a;
  const int b = a.rows, size = b * b, team = block_team(a.n);
  from_zero<int> bad;
  bad.allocate(team, a.n, "bad", routine);
  for_chunks(a.n, team, [&](const row_chunk& c) {
    double inverse[most_block * most_block];
    for (int i = c.lo - 1; i < c.hi; ++i) {
      const double* const row = source.row(i, c.tid);
      float* const out = l.a.block(a.start[i]);
      const std::int64_t count = std::int64_t{a.start[i + 1] - a.start[i]} * size;
      for (std::int64_t k = 0; k < count; ++k) out[k] = static_cast<float>(row[k]);
      if (!invert_block(b, row, inverse)) bad[c.tid] = std::min(bad[c.tid], i);
      std::transform(inverse, inverse + size, &l.inverse[std::int64_t{i} * size],
                     [](double x) { return static_cast<float>(x); });
    }
  });
  int first = a.n;
  for (int t = 0; t < team; ++t) first = std::min(first, bad[t]);
  return first < a.n ? first : -1;
}

void invert_diagonals(block_level<double>& l) {
  const int size = l.a.rows * l.a.rows;
  l.inverse.allocate(std::int64_t{l.a.n} * size + padding, 0.0, "inverse", routine);
  for_chunks(l.a.n, block_team(l.a.n), [&](const row_chunk& c) {
    for (int i = c.lo - 1; i < c.hi; ++i)
      invert_block(l.a.rows, l.a.block(l.a.start[i]), &l.inverse[std::int64_t{i} * size]);
  });
}

/// The blocks of a level as a dense matrix, factored. False: not positive definite.
bool factor_dense(dense_cholesky& last, block_rows& source) {
  const block_pattern& a = source.pattern();
  const int b = a.block;
  const std::int64_t n = std::int64_t{a.n} * b;
  from_zero<double> dense;
  dense.allocate(n * n, 0.0, "dense", routine);
  for (int i = 0; i < a.n; ++i) {
    const double* const row = source.row(i, 0);
    for (int k = 0; k < source.columns_of(i); ++k)
      for (int t = 0; t < b; ++t)
        std::copy_n(row + (std::int64_t{k} * b + t) * b, b,
                    &dense[(std::int64_t{a.column[a.start[i] + k]} * b + t) * n + std::int64_t{i} * b]);
  }
  return last.factorise(static_cast<int>(n), std::move(dense));
}

class builder {
 public:
  builder(aggregation_hierarchy& h, const level& fine) : h_(h), fine_(fine) {}

  void build(const controls& c) {
    h_.points = lay_out_points(fine_);
    h_.modes = count_modes(fine_, c.nsys);
    h_.scale = scale_of(fine_);
    caller_rows rows(fine_, h_.points, h_.scale);
    lay_out_blocks(h_.fine.a, rows, h_.points);
    h_.fine.inverse.allocate(std::int64_t{h_.fine.a.n} * h_.fine.a.size_of_block() + padding, 0.0f, "inverse",
                             routine);
    allocate_vectors(h_.fine, false);
    caller_source source(rows, pattern_of(h_.fine.a));
    fill_fine(source);
    near_null modes;
    make_modes(fine_, c.nsys, h_.points, modes);
    repair_modes(h_.fine.a, h_.fine.inverse, h_.modes, h_.chosen.repair_sweeps, modes);
    build_levels(source, modes);
  }

  void renew() {
    h_.scale = scale_of(fine_);
    caller_rows rows(fine_, h_.points, h_.scale);
    caller_source source(rows, pattern_of(h_.fine.a));
    fill_fine(source);
    for (int k = 0; k < h_.coarse.count(); ++k) {
      block_matrix<double>& a = h_.coarse[k].a;
      if (k == 0) {
        galerkin_values(source, h_.fine.p, h_.fine.index, a);
      } else {
        stored_source above(h_.coarse[k - 1].a);
        galerkin_values(above, h_.coarse[k - 1].p, h_.coarse[k - 1].index, a);
      }
      finish_level(h_.coarse[k]);
    }
    finish_hierarchy(source);
  }

 private:
  template <class T>
  static block_pattern pattern_of(const block_matrix<T>& a) {
    return {a.n, a.rows, a.start, a.column};
  }

  void fill_fine(block_rows& source) {
    const int bad = fill_fine_level(h_.fine, source);
    if (bad >= 0)
      fail(ierr_bad_matrix, "Matrix isn't positive definite: the diagonal block of point " +
                                std::to_string(bad + 1) + " isn't (aggregation_setup)");
    h_.fine.lambda = largest_eigenvalue(h_.fine);
    std::fill_n(h_.fine.f.data(), h_.fine.f.size(), 0.0f);  // empty places stay 0
  }

  void finish_level(block_level<double>& l) {
    invert_diagonals(l);
    l.lambda = largest_eigenvalue(l);
  }

  bool small_enough(int points) const { return points <= h_.chosen.coarse_points; }

  void build_levels(caller_source& source, near_null& modes) {
    double theta = h_.chosen.theta;
    h_.coarse.reserve(max_levels);
    if (!small_enough(h_.fine.a.n) && h_.chosen.most_levels > 1) {
      single_source single(h_.fine.a);
      coarsen(h_.fine, single, source, theta, modes);
    }
    while (!h_.coarse.empty() && h_.levels() < h_.chosen.most_levels) {
      block_level<double>& l = h_.coarse.back();
      theta *= 0.5;
      stored_source stored(l.a);
      if (small_enough(l.a.n) || !coarsen(l, stored, stored, theta, modes)) break;
    }
    finish_hierarchy(source);
  }

  void finish_hierarchy(caller_source& source) {
    h_.last.release();
    const int rows = h_.coarse.empty() ? h_.fine.unknowns() : h_.coarse.back().unknowns();
    if (rows <= largest_dense) {
      const timed time(phase::direct_decomposition);
      bool good = false;
      if (h_.coarse.empty()) {
        h_.last_vector.allocate(h_.fine.unknowns(), "last", routine);
        good = factor_dense(h_.last, source);
      } else {
        stored_source stored(h_.coarse.back().a);
        good = factor_dense(h_.last, stored);
      }
      if (!good)
        fail(ierr_dense_direct,
             "The matrix of the last level isn't positive definite: is the system, and is it held "
             "in place? (aggregation_setup)");
    }
    h_.present = true;
  }

  /// Makes the next level. False where aggregates don't make the system smaller.
  template <class T>
  bool coarsen(block_level<T>& l, block_rows& for_interpolation, block_rows& for_product, double& theta,
               near_null& modes) {
    block_matrix<double> tentative;
    const int aggregates = make_tentative(l, theta, modes, tentative);
    if (aggregates == 0 || aggregates > least_shrinking * l.a.n) return false;
    {
      const timed time(phase::pwint);
      smooth_interpolation(for_interpolation, l.inverse, tentative, aggregates, 4.0 / (3.0 * l.lambda), l.p);
      tentative = {};
      index_transposed(l.p, aggregates, l.index);
    }
    l.aggregates = aggregates;
    l.theta = theta;
    block_level<double> next;
    {
      const timed time(phase::opdfn);
      galerkin_pattern(pattern_of(l.a), l.p, l.index, aggregates, next.a);
      galerkin_values(for_product, l.p, l.index, next.a);
    }
    allocate_vectors(next, true);
    finish_level(next);
    h_.coarse.push_back(std::move(next));
    return true;
  }

  /// Where a limit of strength leaves less than two points to an aggregate, half of it is tried.
  template <class T>
  static int aggregate_points(const block_matrix<T>& a, const from_zero<float>& norm, double& theta,
                              from_zero<int>& aggregate) {
    constexpr int most_halvings = 4;
    int aggregates = form_aggregates(a.n, a.start, a.column, norm, theta, aggregate);
    for (int halving = 0; halving < most_halvings && theta > 0.0 && 2 * aggregates > a.n; ++halving) {
      theta *= 0.5;
      aggregates = form_aggregates(a.n, a.start, a.column, norm, theta, aggregate);
    }
    return aggregates;
  }

  template <class T>
  int make_tentative(const block_level<T>& l, double& theta, near_null& modes,
                     block_matrix<double>& tentative) const {
    const timed time(phase::split);
    from_zero<float> norm;
    coupling_norms(l.a, l.inverse, h_.chosen.strength, norm);
    const int aggregates = aggregate_points(l.a, norm, theta, tentative.column);
    if (aggregates == 0 || aggregates > least_shrinking * l.a.n) return aggregates;
    norm.release();
    near_null coarse;
    factor_by_aggregate(l.a.n, l.a.rows, h_.modes, tentative.column, aggregates, modes, coarse);
    tentative.n = l.a.n;
    tentative.rows = l.a.rows;
    tentative.columns = h_.modes;
    tentative.value = std::move(modes);
    modes = std::move(coarse);
    tentative.start.allocate(l.a.n + 1, "start", routine);
    for (int i = 0; i <= l.a.n; ++i) tentative.start[i] = i;
    return aggregates;
  }

  aggregation_hierarchy& h_;
  const level& fine_;
};

}  // namespace

void set_up(aggregation_hierarchy& h, const level& fine, const controls& c, const options& chosen) {
  h = aggregation_hierarchy();
  h.chosen = chosen;
  builder(h, fine).build(c);
}

void renew(aggregation_hierarchy& h, const level& fine) {
  h.widening = 1.0;
  builder(h, fine).renew();
}

}  // namespace tier::aggregation
