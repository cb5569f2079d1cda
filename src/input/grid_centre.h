// Extent and centre of the part, the latter by counting the occupied cells of a grid.
// Called by the geometry statistics.
#pragma once

#include <array>
#include <span>

namespace keld {

/// Extremes per axis, cm. The start values stay in force: a part at negative
/// coordinates alone has the maximum 1e-20.
struct Extent {
  std::array<double, 3> least{1e20, 1e20, 1e20};
  std::array<double, 3> most{1e-20, 1e-20, 1e-20};
};

/// Mean of the centres of the occupied cells of a grid of 100 x 100 x 100 cells over the extent; 0 with none.
/// A cell is occupied when at least one point lies between its planes, widened by 1e-10, bounds included; a
/// point on a plane or in a thin grid so occupies several. One pass over the points, each by binary search.
std::array<double, 3> occupiedCellCentre(const Extent& extent, std::span<const std::array<double, 3>> points);

/// Bounds of the cells along one axis: plane 1 is the least coordinate,
/// each next one the former plus the step.
class GridAxis {
 public:
  static constexpr int cells = 100;
  GridAxis(double least, double most);

  /// First and last cell (from 0) that take the coordinate; last < first when none does.
  struct Range {
    int first, last;
  };
  Range cellsAt(double coordinate) const;
  double cellCentre(int cell) const;
  double step() const { return step_; }

 private:
  double step_;
  std::array<double, cells + 1> plane_{};
  std::array<double, cells> lower_{}, upper_{};  // widened bounds of each cell, both ascending
};

}  // namespace keld
