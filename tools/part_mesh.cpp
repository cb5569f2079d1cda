// Meshes of the maker's parts: a base of square cells with round holes, and walls that stand on lines of its
// nodes. Ribs, walls and holes share nodes with the base, so that no node lies twice at one place.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

#include "part_maker.h"

namespace part_maker {
namespace {

constexpr int pocketsX = 4, pocketsY = 3;  // of the ribbed plate; ribs stand between them
constexpr int holePockets = 2 * pocketsY;  // the pockets at both ends have a hole

/// Numbers of cells: `x`, `y` of the base, `z` of ribs or walls. A hole takes a block of `hole` x `hole`
/// cells, filled again by `rings` rings of 4 * hole cells each.
struct Cells {
  int x = 2, y = 2, z = 0;
  int hole = 0, rings = 0;
};

int evenCount(double length, double cell, int least) {
  return std::max(least, 2 * static_cast<int>(std::lround(length / cell / 2.0)));
}

/// The numbers of cells for cells of about `cell` mm; even ones,
/// so that a symmetric part has a symmetric mesh.
Cells cellsOf(const PartOptions& part, double cell) {
  Cells cells;
  if (part.shape == Shape::ribbed) {
    const int x = evenCount(part.length / pocketsX, cell, 4), y = evenCount(part.width / pocketsY, cell, 4);
    cells.x = pocketsX * x;
    cells.y = pocketsY * y;
    cells.hole = std::max(2, 2 * static_cast<int>(std::lround(0.3 * std::min(x, y))));
    cells.rings = cells.hole / 2;  // cells at the block's corners then stay below thrice as long as wide
  } else {
    cells.x = evenCount(part.length, cell, 2);
    cells.y = evenCount(part.width, cell, 2);
  }
  if (part.shape != Shape::plate) cells.z = std::max(2, static_cast<int>(std::lround(part.height / cell)));
  return cells;
}

double triangleCount(const PartOptions& part, const Cells& cells) {
  const double x = cells.x, y = cells.y, z = cells.z, hole = cells.hole;
  double count = 2.0 * x * y;
  if (part.shape == Shape::ribbed) {
    count += 2.0 * z * ((pocketsX - 1) * y + (pocketsY - 1) * x);
    count += holePockets * (8.0 * hole * cells.rings - 2.0 * hole * hole);
  }
  if (part.shape == Shape::box) count += 4.0 * z * (x + y);
  return count;
}

/// The numbers of cells whose triangles come nearest to the wished number, among cell sizes around the one
/// that would give it if cells could be cut anywhere.
Cells chooseCells(const PartOptions& part) {
  double cell = std::sqrt(2.0 * part.length * part.width / part.triangles);
  for (int step = 0; step < 10; ++step)
    cell *= std::sqrt(triangleCount(part, cellsOf(part, cell)) / part.triangles);
  Cells best;
  double smallestMiss = std::numeric_limits<double>::max();
  for (int trial = 0; trial < 400; ++trial) {
    Cells cells = cellsOf(part, cell * (0.8 + 0.001 * trial));
    if (part.shape != Shape::plate) cells.z += trial % 2;
    const double miss = std::abs(triangleCount(part, cells) - part.triangles);
    if (miss >= smallestMiss) continue;
    smallestMiss = miss;
    best = cells;
  }
  if (triangleCount(part, best) > 5e7) throw std::invalid_argument("more than 50,000,000 triangles");
  return best;
}

class Builder {
 public:
  Builder(const PartOptions& part, const Cells& cells) : part_(part), cells_(cells) {
    mesh_.nodes.reserve(static_cast<std::size_t>(part.triangles) * 6 / 10 + 100);
    mesh_.triangles.reserve(static_cast<std::size_t>(part.triangles) * 11 / 10 + 100);
    base_.assign(static_cast<std::size_t>((cells.x + 1) * (cells.y + 1)), none);
    column_.assign(base_.size(), none);
  }

  Mesh build() {
    chooseHoles();
    addBase();
    for (const Hole& hole : holes_) fillAroundHole(hole);
    if (part_.shape == Shape::ribbed) addRibs();
    if (part_.shape == Shape::box) addWalls();
    mesh_.gateNode = base_[at(cells_.x / 2, cells_.y / 2)];
    if (part_.shape == Shape::ribbed) addRunners();
    return std::move(mesh_);
  }

 private:
  struct Hole {
    int i, j;  // lower left cell of its block
  };
  static constexpr int none = -1;

  std::size_t at(int i, int j) const { return static_cast<std::size_t>(j * (cells_.x + 1) + i); }
  double x(int i) const { return part_.length * i / cells_.x; }
  double y(int j) const { return part_.width * j / cells_.y; }

  int addNode(double x, double y, double z) {
    mesh_.nodes.push_back({x, y, z});
    return static_cast<int>(mesh_.nodes.size()) - 1;
  }

  void addTriangle(int a, int b, int c, Zone zone, double thickness) {
    mesh_.triangles.push_back({a, b, c});
    mesh_.zone.push_back(zone);
    mesh_.thickness.push_back(thickness);
  }

  /// A cell with corners in turn, cut along a diagonal that alternates from cell to cell.
  void addCell(std::array<int, 4> c, int parity, Zone zone, double thickness) {
    if (parity % 2 == 0) {
      addTriangle(c[0], c[1], c[2], zone, thickness);
      addTriangle(c[0], c[2], c[3], zone, thickness);
    } else {
      addTriangle(c[0], c[1], c[3], zone, thickness);
      addTriangle(c[1], c[2], c[3], zone, thickness);
    }
  }

  void chooseHoles() {
    if (part_.shape != Shape::ribbed) return;
    const int pocketX = cells_.x / pocketsX, pocketY = cells_.y / pocketsY;
    for (int pocket = 0; pocket < pocketsY; ++pocket) {
      const int j = pocket * pocketY + (pocketY - cells_.hole) / 2;
      holes_.push_back({(pocketX - cells_.hole) / 2, j});
      holes_.push_back({cells_.x - (pocketX + cells_.hole) / 2, j});
    }
  }

  /// Whether the cell lies in the block of a hole.
  bool inHole(int i, int j) const {
    const auto covers = [&](const Hole& hole) {
      return i >= hole.i && i < hole.i + cells_.hole && j >= hole.j && j < hole.j + cells_.hole;
    };
    return std::any_of(holes_.begin(), holes_.end(), covers);
  }

  void addBase() {
    const auto nodeOf = [&](int i, int j) {
      int& node = base_[at(i, j)];
      if (node == none) node = addNode(x(i), y(j), 0.0);
      return node;
    };
    for (int j = 0; j < cells_.y; ++j)
      for (int i = 0; i < cells_.x; ++i) {
        if (inHole(i, j)) continue;
        const std::array corners{nodeOf(i, j), nodeOf(i + 1, j), nodeOf(i + 1, j + 1), nodeOf(i, j + 1)};
        addCell(corners, i + j, Zone::base, part_.wall);
      }
  }

  /// Nodes around the block of a hole, counterclockwise from its lower left corner.
  std::vector<int> blockBorder(const Hole& hole) const {
    const int n = cells_.hole;
    std::vector<int> border;
    border.reserve(static_cast<std::size_t>(4 * n));
    for (int k = 0; k < n; ++k) border.push_back(base_[at(hole.i + k, hole.j)]);
    for (int k = 0; k < n; ++k) border.push_back(base_[at(hole.i + n, hole.j + k)]);
    for (int k = 0; k < n; ++k) border.push_back(base_[at(hole.i + n - k, hole.j + n)]);
    for (int k = 0; k < n; ++k) border.push_back(base_[at(hole.i, hole.j + n - k)]);
    return border;
  }

  /// Rings of cells that pass from the square border of the block to the circle, whose diameter is half the
  /// block's smaller side.
  void fillAroundHole(const Hole& hole) {
    const std::vector<int> border = blockBorder(hole);
    const int around = static_cast<int>(border.size());
    const double left = x(hole.i), right = x(hole.i + cells_.hole);
    const double low = y(hole.j), high = y(hole.j + cells_.hole);
    const double radius = 0.25 * std::min(right - left, high - low);
    std::vector<int> outer = border, inner(border.size());
    for (int ring = 1; ring <= cells_.rings; ++ring) {
      const double share = static_cast<double>(ring) / cells_.rings;
      for (int k = 0; k < around; ++k) {
        const double angle = std::numbers::pi * (2.0 * k / around - 0.75);
        const auto& square = mesh_.node(border[static_cast<std::size_t>(k)]);
        const double circleX = 0.5 * (left + right) + radius * std::cos(angle);
        const double circleY = 0.5 * (low + high) + radius * std::sin(angle);
        inner[static_cast<std::size_t>(k)] = addNode(square[0] + share * (circleX - square[0]),
                                                     square[1] + share * (circleY - square[1]), 0.0);
      }
      for (int k = 0; k < around; ++k) {
        const auto here = static_cast<std::size_t>(k), next = static_cast<std::size_t>((k + 1) % around);
        addCell({outer[here], outer[next], inner[next], inner[here]}, k + ring, Zone::base, part_.wall);
      }
      outer = inner;
    }
  }

  /// First node of the column above a node of the base; walls that cross share it.
  int columnAbove(std::size_t place) {
    if (column_[place] == none) {
      const auto foot = mesh_.node(base_[place]);
      column_[place] = static_cast<int>(mesh_.nodes.size());
      for (int k = 1; k <= cells_.z; ++k) addNode(foot[0], foot[1], part_.height * k / cells_.z);
    }
    return column_[place];
  }

  /// A wall on the straight line of base nodes from (i, j), `count` cells in direction (di, dj). Its normal
  /// is the direction turned clockwise.
  void addWall(int i, int j, int di, int dj, int count, Zone zone, double thickness) {
    for (int c = 0; c < count; ++c) {
      const std::size_t here = at(i + c * di, j + c * dj), next = at(i + (c + 1) * di, j + (c + 1) * dj);
      const int columnHere = columnAbove(here), columnNext = columnAbove(next);
      for (int k = 0; k < cells_.z; ++k) {
        const int lowHere = k == 0 ? base_[here] : columnHere + k - 1;
        const int lowNext = k == 0 ? base_[next] : columnNext + k - 1;
        addCell({lowHere, lowNext, columnNext + k, columnHere + k}, c + k, zone, thickness);
      }
    }
  }

  void addRibs() {
    const double thickness = 0.6 * part_.wall;
    for (int rib = 1; rib < pocketsX; ++rib) {
      mesh_.junctionX.push_back(x(rib * cells_.x / pocketsX));
      addWall(rib * cells_.x / pocketsX, 0, 0, 1, cells_.y, Zone::rib, thickness);
    }
    for (int rib = 1; rib < pocketsY; ++rib) {
      mesh_.junctionY.push_back(y(rib * cells_.y / pocketsY));
      addWall(0, rib * cells_.y / pocketsY, 1, 0, cells_.x, Zone::rib, thickness);
    }
  }

  /// Four walls with their normals to the outside.
  void addWalls() {
    mesh_.junctionX = {0.0, part_.length};
    mesh_.junctionY = {0.0, part_.width};
    addWall(0, 0, 1, 0, cells_.x, Zone::wall, part_.wall);
    addWall(cells_.x, 0, 0, 1, cells_.y, Zone::wall, part_.wall);
    addWall(cells_.x, cells_.y, -1, 0, cells_.x, Zone::wall, part_.wall);
    addWall(0, cells_.y, 0, -1, cells_.y, Zone::wall, part_.wall);
  }

  /// A sprue from outside, a runner along x below the part, a gate of small diameter at the base.
  void addRunners() {
    const auto gate = mesh_.node(mesh_.gateNode);
    constexpr std::array corners{std::array{-30.0, -60.0}, std::array{-30.0, -20.0}, std::array{0.0, -20.0},
                                 std::array{0.0, -5.0}};  // mm from the gate, along x and z
    constexpr std::array diameter{6.0, 5.0, 4.0};         // mm
    constexpr int pieces = 4;
    int last = addNode(gate[0] + corners[0][0], gate[1], corners[0][1]);
    for (std::size_t leg = 0; leg < diameter.size(); ++leg)
      for (int k = 1; k <= pieces; ++k) {
        const double share = static_cast<double>(k) / pieces;
        const double dx = corners[leg][0] + share * (corners[leg + 1][0] - corners[leg][0]);
        const double dz = corners[leg][1] + share * (corners[leg + 1][1] - corners[leg][1]);
        const int next = addNode(gate[0] + dx, gate[1], dz);
        addRunner(last, next, diameter[leg]);
        last = next;
      }
    addRunner(last, mesh_.gateNode, 1.5);
  }

  void addRunner(int from, int to, double diameter) {
    mesh_.runners.push_back({from, to});
    mesh_.runnerDiameter.push_back(diameter);
  }

  const PartOptions& part_;
  Cells cells_;
  Mesh mesh_;
  std::vector<Hole> holes_;
  std::vector<int> base_;    // node at a crossing of base lines, none inside a hole's block
  std::vector<int> column_;  // first node above it, none where no wall stands
};

bool positive(double value) { return std::isfinite(value) && value > 0.0; }

}  // namespace

Mesh makeMesh(const PartOptions& part) {
  if (!positive(part.length) || !positive(part.width) || !positive(part.wall))
    throw std::invalid_argument("length, width and wall must be above 0 mm");
  if (part.shape != Shape::plate && !positive(part.height))
    throw std::invalid_argument("the height of ribs or walls must be above 0 mm");
  if (part.triangles < 8) throw std::invalid_argument("at least 8 triangles are needed");
  return Builder(part, chooseCells(part)).build();
}

std::optional<Shape> shapeNamed(std::string_view name) {
  if (name == "plate") return Shape::plate;
  if (name == "ribbed") return Shape::ribbed;
  if (name == "box") return Shape::box;
  return std::nullopt;
}

}  // namespace part_maker
