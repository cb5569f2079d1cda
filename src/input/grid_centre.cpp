// The grid over the part as a set of bits, one word pair per column of cells.
// Called by the geometry statistics.
#include "input/grid_centre.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace keld {
namespace {

constexpr double tolerance = 1e-10;  // cm, added on both sides of a cell
constexpr int n = GridAxis::cells;
constexpr int wordBits = 64;
constexpr std::size_t wordsOfColumn = 2;  // 100 cells

/// Bits first..last of a column, cut to the word that begins at bit `start`.
std::uint64_t bitsOf(GridAxis::Range range, int start) {
  const int first = std::max(range.first - start, 0);
  const int last = std::min(range.last - start, wordBits - 1);
  if (last < first) return 0;
  const std::uint64_t upTo = last == wordBits - 1 ? ~std::uint64_t{0} : (std::uint64_t{1} << (last + 1)) - 1;
  return upTo & ~((std::uint64_t{1} << first) - 1);
}

}  // namespace

GridAxis::GridAxis(double least, double most) : step_((most - least) / cells) {
  plane_[0] = least;
  for (std::size_t i = 1; i < plane_.size(); ++i) plane_[i] = plane_[i - 1] + step_;
  for (std::size_t i = 0; i < lower_.size(); ++i) {
    lower_[i] = plane_[i] - tolerance;
    upper_[i] = plane_[i + 1] + tolerance;
  }
}

GridAxis::Range GridAxis::cellsAt(double coordinate) const {
  const auto first = std::lower_bound(upper_.begin(), upper_.end(), coordinate) - upper_.begin();
  const auto end = std::upper_bound(lower_.begin(), lower_.end(), coordinate) - lower_.begin();
  return {static_cast<int>(first), static_cast<int>(end) - 1};
}

double GridAxis::cellCentre(int cell) const {
  const auto i = static_cast<std::size_t>(cell);
  return (plane_[i] + plane_[i + 1]) / 2.0;
}

std::array<double, 3> occupiedCellCentre(const Extent& extent,
                                         std::span<const std::array<double, 3>> points) {
  if (points.empty()) return {};
  const std::array<GridAxis, 3> axes{GridAxis(extent.least[0], extent.most[0]),
                                     GridAxis(extent.least[1], extent.most[1]),
                                     GridAxis(extent.least[2], extent.most[2])};
  // A point of a flat part is in all cells across it: the thinnest axis runs along the bits of a column.
  std::array<std::size_t, 3> order{0, 1, 2};
  std::ranges::stable_sort(order,
                           [&axes](std::size_t a, std::size_t b) { return axes[a].step() > axes[b].step(); });
  const auto [a, b, c] = order;

  std::vector<std::uint64_t> columns(static_cast<std::size_t>(n) * n * wordsOfColumn, 0);
  for (const auto& point : points) {
    const GridAxis::Range ra = axes[a].cellsAt(point[a]), rb = axes[b].cellsAt(point[b]),
                          rc = axes[c].cellsAt(point[c]);
    const std::uint64_t low = bitsOf(rc, 0), high = bitsOf(rc, wordBits);
    for (int i = ra.first; i <= ra.last; ++i)
      for (int j = rb.first; j <= rb.last; ++j) {
        std::uint64_t* column = &columns[static_cast<std::size_t>(i * n + j) * wordsOfColumn];
        column[0] |= low;
        column[1] |= high;
      }
  }

  std::array<double, 3> sum{};
  long count = 0;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      for (int k = 0; k < n; ++k) {
        const std::uint64_t word =
            columns[static_cast<std::size_t>(i * n + j) * wordsOfColumn + (k >= wordBits)];
        if (!(word >> (k % wordBits) & 1)) continue;
        sum[a] += axes[a].cellCentre(i);
        sum[b] += axes[b].cellCentre(j);
        sum[c] += axes[c].cellCentre(k);
        ++count;
      }
  if (count > 0)
    for (double& s : sum) s /= static_cast<double>(count);
  return sum;
}

}  // namespace keld
