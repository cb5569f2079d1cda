// Near-null vectors of level 1.
#include "tier/aggregation/near_null.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"

namespace tier::aggregation {

const per_context<given_modes> modes_of_caller;

namespace {

/// Rigid-body modes from the coordinates x of rows with functions 1..n: translations, then with rotations as
/// functions 4 to 6 too. Lengths are taken from the middle, in units of half the extent.
class rigid_body {
 public:
  explicit rigid_body(const level& fine)
      : given_(modes_of_caller()), iu_(fine.iu), d_(static_cast<std::size_t>(given_.dimension)) {
    const given_modes& g = given_;
    for (std::size_t c = 0; c < d_; ++c) {
      double low = place_of(0)[c], high = low;
      for (int r = 0; r < g.rows; ++r) {
        const double x = place_of(r)[c];
        low = std::min(low, x);
        high = std::max(high, x);
      }
      middle_[c] = 0.5 * (low + high);
      half_ = std::max(half_, 0.5 * (high - low));
    }
    if (!(half_ > 0.0)) half_ = 1.0;
  }

  double value(int row, int mode) const {
    const int function = iu_[row + 1] - 1;
    if (mode < given_.dimension) return function == mode ? 1.0 : 0.0;
    std::array<double, 3> x{};
    for (std::size_t c = 0; c < d_; ++c) x[c] = (place_of(row)[c] - middle_[c]) / half_;
    const int axis = d_ == 2 ? 2 : mode - 3;
    if (function >= 3) return function - 3 == axis ? 1.0 / half_ : 0.0;
    // component `function` of e_axis x X
    const int next = (axis + 1) % 3, last = (axis + 2) % 3;
    const double* const arm = x.data();
    return function == next ? -arm[last] : function == last ? arm[next] : 0.0;
  }

 private:
  const double* place_of(int row) const {
    return given_.coordinates.data() + std::int64_t{row} * given_.dimension;
  }

  const given_modes& given_;
  view<int> iu_;
  std::size_t d_;
  std::array<double, 3> middle_{};
  double half_ = 0.0;
};

void check_rows(const level& fine) {
  const given_modes& g = modes_of_caller();
  if (g.rows != fine.n)
    fail(ierr_inconsistent_input, "Modes or coordinates were given for " + std::to_string(g.rows) +
                                      " variables, the system has " + std::to_string(fine.n) +
                                      " (TIER_MODES_SET, TIER_COORDINATES_SET)");
}

}  // namespace

int count_modes(const level& fine, int functions) {
  const given_modes& g = modes_of_caller();
  if (g.count > 0) {
    check_rows(fine);
    return g.count;
  }
  if (g.dimension > 0) {
    check_rows(fine);
    if (functions != g.dimension && !(g.dimension == 3 && functions == 6))
      fail(ierr_inconsistent_input, "Coordinates in " + std::to_string(g.dimension) +
                                        " directions give no rigid-body modes for nsys=" +
                                        std::to_string(functions) + " (TIER_COORDINATES_SET)");
    return g.dimension == 2 ? 3 : 6;
  }
  if (functions > most_block)
    fail(ierr_inconsistent_input,
         "Aggregation takes at most " + std::to_string(most_block) + " functions (nsys)");
  return functions;
}

void make_modes(const level& fine, int functions, const point_layout& points, near_null& vectors) {
  const given_modes& g = modes_of_caller();
  const int m = count_modes(fine, functions), b = points.block;
  vectors.allocate(std::int64_t{points.points} * b * m + padding, 0.0, "modes", "make_modes");
  const auto put = [&](int row, int mode, double value) {
    const std::int64_t place = points.place[row];
    const std::int64_t point = points.point[row];
    vectors[point * b * m + mode * b + (place - point * b)] = value;
  };
  if (g.count == 0 && g.dimension > 0) {
    const rigid_body body(fine);
    for (int row = 0; row < points.rows; ++row)
      for (int mode = 0; mode < m; ++mode) put(row, mode, body.value(row, mode));
    return;
  }
  for (int row = 0; row < points.rows; ++row)
    for (int mode = 0; mode < m; ++mode) {
      const double constant = !fine.iu || fine.iu[row + 1] == mode + 1 ? 1.0 : 0.0;
      put(row, mode,
          g.count > 0 ? g.values[static_cast<std::size_t>(mode) * static_cast<std::size_t>(g.rows) +
                                 static_cast<std::size_t>(row)]
                      : constant);
    }
}

namespace {}  // namespace

}  // namespace tier::aggregation
