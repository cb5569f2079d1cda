// Angles at which facets meet; see the header.
#include "model/walls/facet/fold_turns.h"

#include <algorithm>
#include <cmath>

namespace keld {

namespace {

constexpr double straight = 1e-6;  // sine of a turn that counts as none

/// Corner `corner` of a triangle at the node in hand.
struct Incidence {
  int triangle = 0, corner = 0;
  Vector3 normal{};                         // unit
  double angle = 0.0;                       // rad, of the triangle at the node
  std::array<int, 2> neighbour = {-1, -1};  // joined across the edges in front and behind; -1: none
  std::array<bool, 2> turnedOver{};         // that neighbour's corners run the other way round
  int sign = 0;                             // against the first triangle of its sector; 0: not yet in one
};

/// One side of an incidence: the edge to the corner behind (0) or before (1).
struct Side {
  int otherNode, incidence, side;
};

Incidence incidenceOf(const std::array<Vector3, 3>& corner, int triangle, int at) {
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
void joinAcrossEdges(std::vector<Side>& sides, std::vector<Incidence>& around) {
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
Vector3 gatherSector(int start, std::vector<Incidence>& around, std::vector<int>& members) {
  members.assign(1, start);
  around[start].sign = 1;
  Vector3 sum{};
  for (std::size_t k = 0; k < members.size(); ++k) {
    const Incidence& one = around[members[k]];
    sum = sum + (one.sign * one.angle) * one.normal;
    for (int side = 0; side < 2; ++side) {
      const int next = one.neighbour[side];
      if (next < 0 || around[next].sign != 0) continue;
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

/// Corners of triangles with area by node: start of each node's stretch, and triangle x 3 + corner.
struct CornersByNode {
  std::vector<std::size_t> start;
  std::vector<int> corner;
};

CornersByNode cornersByNode(const std::vector<std::array<int, 3>>& triangle,
                            const std::vector<Vector3>& node) {
  CornersByNode table;
  table.start.assign(node.size() + 1, 0);
  std::vector<char> usable(triangle.size(), 0);
  for (std::size_t t = 1; t < triangle.size(); ++t) {
    const Vector3 &a = node[triangle[t][0]], &b = node[triangle[t][1]], &c = node[triangle[t][2]];
    usable[t] = norm(cross(b - a, c - a)) > 0.0;
    if (!usable[t]) continue;
    for (const int n : triangle[t]) ++table.start[static_cast<std::size_t>(n) + 1];
  }
  for (std::size_t n = 1; n < table.start.size(); ++n) table.start[n] += table.start[n - 1];
  table.corner.resize(table.start.back());
  std::vector<std::size_t> next(table.start.begin(), table.start.end() - 1);
  for (std::size_t t = 1; t < triangle.size(); ++t) {
    if (!usable[t]) continue;
    for (int c = 0; c < 3; ++c) table.corner[next[triangle[t][c]]++] = static_cast<int>(3 * t) + c;
  }
  return table;
}

}  // namespace

std::vector<std::array<Vector3, 3>> foldTurns(const std::vector<std::array<int, 3>>& triangle,
                                              const std::vector<Vector3>& node) {
  const CornersByNode table = cornersByNode(triangle, node);
  std::vector<std::array<Vector3, 3>> turns(triangle.size());
  std::vector<Incidence> around;
  std::vector<Side> sides;
  std::vector<int> members;
  for (std::size_t n = 1; n < node.size(); ++n) {
    around.clear();
    sides.clear();
    for (std::size_t k = table.start[n]; k < table.start[n + 1]; ++k) {
      const int t = table.corner[k] / 3, at = table.corner[k] % 3;
      const std::array<int, 3>& corner = triangle[t];
      const int place = static_cast<int>(around.size());
      around.push_back(incidenceOf({node[corner[0]], node[corner[1]], node[corner[2]]}, t, at));
      sides.push_back({corner[(at + 1) % 3], place, 0});
      sides.push_back({corner[(at + 2) % 3], place, 1});
    }
    joinAcrossEdges(sides, around);
    for (std::size_t start = 0; start < around.size(); ++start) {
      if (around[start].sign != 0) continue;
      const Vector3 sum = gatherSector(static_cast<int>(start), around, members);
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
