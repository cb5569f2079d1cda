// Angles at which facets meet; see the header.
#include "model/walls/facet/fold_turns.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace keld {

namespace {

constexpr double straight = 1e-6;  // sine of a turn that counts as none

/// Corner `corner` of a triangle at the node in hand.
struct Incidence {
  int triangle = 0;
  std::size_t corner = 0;
  Vector3 normal{};                  // unit
  double angle = 0.0;                // rad, of the triangle at the node
  std::array<int, 2> neighbour{};    // joined across the edges in front and behind; 0: none
  std::array<bool, 2> turnedOver{};  // that neighbour's corners run the other way round
  int sign = 0;                      // against the first triangle of its sector; 0: not yet in one
};

/// One side of an incidence: the edge to the corner behind (0) or before (1).
struct Side {
  int otherNode, incidence;
  std::size_t side;
};

Incidence incidenceOf(const std::array<Vector3, 3>& corner, int triangle, std::size_t at) {
  const Vector3 a = corner[(at + 1) % 3] - corner[at], b = corner[(at + 2) % 3] - corner[at];
  const Vector3 normal = cross(a, b);
  const double length = norm(normal);
  Incidence result;
  result.triangle = triangle;
  result.corner = at;
  if (length > 0.0) result.normal = (1.0 / length) * normal;
  result.angle = std::atan2(length, dot(a, b));
  return result;
}

/// Joins the incidences whose edge has exactly two of them.
void joinAcrossEdges(std::vector<Side>& sides, Column<Incidence>& around) {
  std::sort(sides.begin(), sides.end(), [](const Side& a, const Side& b) {
    return a.otherNode != b.otherNode ? a.otherNode < b.otherNode : a.incidence < b.incidence;
  });
  for (std::size_t first = 0, last; first < sides.size(); first = last) {
    last = first + 1;
    while (last < sides.size() && sides[last].otherNode == sides[first].otherNode) ++last;
    if (last - first != 2) continue;
    const Side &one = sides[first], &two = sides[first + 1];
    const bool turnedOver = one.side == two.side;
    around[one.incidence].neighbour[one.side] = two.incidence;
    around[two.incidence].neighbour[two.side] = one.incidence;
    around[one.incidence].turnedOver[one.side] = around[two.incidence].turnedOver[two.side] = turnedOver;
  }
}

/// Gathers the sector of an incidence into `members`, gives each its sign, returns the sum of the normals.
Vector3 gatherSector(int start, Column<Incidence>& around, std::vector<int>& members) {
  members.assign(1, start);
  around[start].sign = 1;
  Vector3 sum{};
  for (std::size_t k = 0; k < members.size(); ++k) {
    const Incidence& one = around[members[k]];
    sum = sum + (one.sign * one.angle) * one.normal;
    for (std::size_t side = 0; side < 2; ++side) {
      const int next = one.neighbour[side];
      if (next == 0 || around[next].sign != 0) continue;
      around[next].sign = one.turnedOver[side] ? -one.sign : one.sign;
      members.push_back(next);
    }
  }
  return sum;
}

Vector3 turnFrom(const Vector3& mean, const Vector3& normal) {
  const Vector3 axis = cross(mean, normal);
  const double sine = norm(axis);
  if (!(sine >= straight)) return {};
  return (std::atan2(sine, dot(mean, normal)) / sine) * axis;
}

struct Corner {
  int triangle;
  std::size_t place;  // 0..2
};

/// Corners of triangles with area by node.
struct CornersByNode {
  Column<int> start;      // [1..nodes + 1] row of a node's first corner
  Column<Corner> corner;  // [1..start(nodes + 1) - 1]
};

CornersByNode cornersByNode(const Column<std::array<int, 3>>& triangle, const Column<Vector3>& node) {
  CornersByNode table;
  table.start.assign(node.rows() + 1, 0);
  table.start[1] = 1;
  Column<char> usable(triangle.rows(), 0);
  for (int t = 1; t <= triangle.rows(); ++t) {
    const Vector3 &a = node[triangle[t][0]], &b = node[triangle[t][1]], &c = node[triangle[t][2]];
    usable[t] = norm(cross(b - a, c - a)) > 0.0;
    if (!usable[t]) continue;
    for (const int n : triangle[t]) ++table.start[n + 1];
  }
  std::partial_sum(table.start.begin(), table.start.end(), table.start.begin());
  table.corner.resize(table.start.back() - 1);
  Column<int> next(table.start);
  for (int t = 1; t <= triangle.rows(); ++t) {
    if (!usable[t]) continue;
    for (std::size_t c = 0; c < 3; ++c) table.corner[next[triangle[t][c]]++] = {t, c};
  }
  return table;
}

}  // namespace

Column<std::array<Vector3, 3>> foldTurns(const Column<std::array<int, 3>>& triangle,
                                         const Column<Vector3>& node) {
  const CornersByNode table = cornersByNode(triangle, node);
  Column<std::array<Vector3, 3>> turns(triangle.rows());
  Column<Incidence> around;
  std::vector<Side> sides;
  std::vector<int> members;
  for (int n = 1; n <= node.rows(); ++n) {
    around.resize(0);
    sides.clear();
    for (int k = table.start[n]; k < table.start[n + 1]; ++k) {
      const auto [t, at] = table.corner[k];
      const std::array<int, 3>& corner = triangle[t];
      around.push_back(incidenceOf({node[corner[0]], node[corner[1]], node[corner[2]]}, t, at));
      const int place = around.rows();
      sides.push_back({corner[(at + 1) % 3], place, 0});
      sides.push_back({corner[(at + 2) % 3], place, 1});
    }
    joinAcrossEdges(sides, around);
    for (int start = 1; start <= around.rows(); ++start) {
      if (around[start].sign != 0) continue;
      const Vector3 sum = gatherSector(start, around, members);
      const double length = norm(sum);
      if (!(length > 0.0)) continue;
      for (const int m : members) {
        const Incidence& one = around[m];
        turns[one.triangle][one.corner] = turnFrom((one.sign / length) * sum, one.normal);
      }
    }
  }
  return turns;
}

}  // namespace keld
