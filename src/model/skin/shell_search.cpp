// Uniform and multi-size grids over the skin's triangles.
#include "model/skin/shell_search.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace keld {

PointGrid::PointGrid(const Column<Vector3>& points, const std::vector<int>& members) : points_(points) {
  if (members.empty()) {
    start_.assign(2, 1);
    return;
  }
  Vector3 high = points[members.front()];
  low_ = high;
  for (const int m : members)
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low_[axis] = std::min(low_[axis], points[m][axis]);
      high[axis] = std::max(high[axis], points[m][axis]);
    }
  const double extent = std::max({high[0] - low_[0], high[1] - low_[1], high[2] - low_[2], 1e-12});

  // The points lie on surfaces: as many cells along the longest side as the root of the count.
  const double along = std::clamp(std::sqrt(static_cast<double>(members.size())), 1.0, 400.0);
  size_ = extent / along;
  for (std::size_t axis = 0; axis < 3; ++axis)
    cells_[axis] = static_cast<int>((high[axis] - low_[axis]) / size_) + 1;
  while (1.0 * cells_[0] * cells_[1] * cells_[2] > 8.0 * static_cast<double>(members.size()) + 64.0) {
    size_ *= 1.5;
    for (std::size_t axis = 0; axis < 3; ++axis)
      cells_[axis] = static_cast<int>((high[axis] - low_[axis]) / size_) + 1;
  }

  const auto index = [&](const Vector3& p) {
    return cellNumber(cellOf(p[0], 0), cellOf(p[1], 1), cellOf(p[2], 2));
  };
  start_.assign(cellNumber(cells_[0] - 1, cells_[1] - 1, cells_[2] - 1) + 1, 0);
  start_[1] = 1;
  for (const int m : members) ++start_[index(points[m]) + 1];
  std::partial_sum(start_.begin(), start_.end(), start_.begin());
  member_.resize(start_.back() - 1);
  Column<int> next(start_);
  for (const int m : members) member_[next[index(points[m])]++] = m;
}

int PointGrid::cellOf(double value, std::size_t axis) const {
  const double cell = (value - low_[axis]) / size_;
  return static_cast<int>(std::clamp(cell, 0.0, cells_[axis] - 1.0));
}

/// From 1, x running fastest.
std::int64_t PointGrid::cellNumber(int x, int y, int z) const {
  return (std::int64_t{z} * cells_[1] + y) * cells_[0] + x + 1;
}

void PointGrid::searchCell(int x, int y, int z, const Vector3& centre, double& best, int& found) const {
  const std::int64_t c = cellNumber(x, y, z);
  for (int k = start_[c]; k < start_[c + 1]; ++k) {
    const double d = distance(points_[member_[k]], centre);
    if (d < best || (d == best && found != 0 && member_[k] > found)) {
      best = d;
      found = member_[k];
    }
  }
}

int PointGrid::nearest(const Vector3& centre, double radius) const {
  if (member_.empty() || !(radius > 0.0)) return 0;
  std::array<int, 3> home;
  for (std::size_t axis = 0; axis < 3; ++axis) home[axis] = cellOf(centre[axis], axis);
  const int farthest = std::max({cells_[0], cells_[1], cells_[2]});

  double best = radius;
  int found = 0;
  // Shells of cells around the home cell; a shell at distance s holds no point nearer than (s - 1) cells.
  for (int s = 0; s < farthest && (s - 1) * size_ <= best; ++s)
    for (int z = std::max(0, home[2] - s); z <= std::min(cells_[2] - 1, home[2] + s); ++z)
      for (int y = std::max(0, home[1] - s); y <= std::min(cells_[1] - 1, home[1] + s); ++y) {
        const bool face = std::abs(z - home[2]) == s || std::abs(y - home[1]) == s;
        const int step = face || s == 0 ? 1 : 2 * s;
        for (int x = home[0] - s; x <= home[0] + s; x += step)
          if (x >= 0 && x < cells_[0]) searchCell(x, y, z, centre, best, found);
      }
  return found;
}

namespace {

constexpr double originShift = 1 << 20;  // cells, so that indices of parts around the origin are positive

std::uint64_t keyOf(int level, std::int64_t x, std::int64_t y, std::int64_t z) {
  std::uint64_t h = static_cast<std::uint64_t>(level + 1100);
  for (const std::int64_t v : {x, y, z}) {
    h ^= static_cast<std::uint64_t>(v) + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2);
    h *= 0xff51afd7ed558ccdull;  // equal keys of unequal cells only add candidates, which are tested exactly
  }
  return h;
}

std::int64_t cellIndex(double value, double size) {
  return static_cast<std::int64_t>(std::floor(std::clamp(value / size, -9e15, 9e15)) + originShift);
}

}  // namespace

BoxGrid::BoxGrid(const Column<Vector3>& low, const Column<Vector3>& high) {
  for (int k = 1; k <= low.rows(); ++k) {
    const double extent = std::max({high[k][0] - low[k][0], high[k][1] - low[k][1], high[k][2] - low[k][2]});
    if (!(extent >= 0.0) || !std::isfinite(extent)) continue;
    int level = 0;
    std::frexp(std::max(extent, 1e-12), &level);  // the cell, 2^level, is at least as long as the box
    levels_.push_back(level);
    const double size = std::ldexp(1.0, level);
    for (std::int64_t z = cellIndex(low[k][2], size); z <= cellIndex(high[k][2], size); ++z)
      for (std::int64_t y = cellIndex(low[k][1], size); y <= cellIndex(high[k][1], size); ++y)
        for (std::int64_t x = cellIndex(low[k][0], size); x <= cellIndex(high[k][0], size); ++x)
          entries_.push_back({keyOf(level, x, y, z), k});
  }
  std::sort(levels_.begin(), levels_.end());
  levels_.erase(std::unique(levels_.begin(), levels_.end()), levels_.end());
  std::sort(entries_.begin(), entries_.end(),
            [](const Entry& a, const Entry& b) { return a.key != b.key ? a.key < b.key : a.box < b.box; });
}

void BoxGrid::candidates(const Vector3& point, std::vector<int>& found) const {
  found.clear();
  for (const int level : levels_) {
    const double size = std::ldexp(1.0, level);
    const std::uint64_t key =
        keyOf(level, cellIndex(point[0], size), cellIndex(point[1], size), cellIndex(point[2], size));
    auto entry = std::lower_bound(entries_.begin(), entries_.end(), key,
                                  [](const Entry& a, std::uint64_t b) { return a.key < b; });
    for (; entry != entries_.end() && entry->key == key; ++entry) found.push_back(entry->box);
  }
}

}  // namespace keld
