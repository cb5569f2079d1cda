// Spatial searches of shell model processing: nearest point within a radius, and boxes that hold a point.
#pragma once

#include <cstdint>
#include <vector>

#include "run/base/column.h"
#include "run/base/vector3.h"

namespace keld {

/// Points in a uniform grid whose cells hold about one point each.
class PointGrid {
 public:
  /// `members` are the numbers of the points that take part; `points` is indexed by number.
  PointGrid(const Column<Vector3>& points, const std::vector<int>& members);

  /// The member nearest to `centre` with a distance below `radius`, the highest number of equals; 0 if none.
  int nearest(const Vector3& centre, double radius) const;

 private:
  int cellOf(double value, std::size_t axis) const;
  std::int64_t cellNumber(int x, int y, int z) const;
  void searchCell(int x, int y, int z, const Vector3& centre, double& best, int& found) const;

  const Column<Vector3>& points_;
  Vector3 low_{};
  double size_ = 1.0;
  std::array<int, 3> cells_{1, 1, 1};
  Column<int> start_;   // [1..cells + 1] row of a cell's first member
  Column<int> member_;  // numbers of points
};

/// Axis-aligned boxes, each kept in cells of its own size, so that a query looks at a few cells of each size
/// whatever the mixture of large and small boxes.
class BoxGrid {
 public:
  /// Boxes low(k) .. high(k), k = 1..count; boxes with low > high are left out.
  BoxGrid(const Column<Vector3>& low, const Column<Vector3>& high);

  /// Numbers of all boxes whose cells hold the point: a superset of the boxes that do.
  void candidates(const Vector3& point, std::vector<int>& found) const;

 private:
  struct Entry {
    std::uint64_t key;
    int box;
  };
  std::vector<Entry> entries_;  // sorted by key
  std::vector<int> levels_;     // exponents of the cell sizes in use
};

}  // namespace keld
