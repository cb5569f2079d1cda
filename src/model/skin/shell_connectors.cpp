// Connector bars between the two faces of a wall, by nearest corners of paired triangles.
#include "model/skin/shell_connectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_set>

#include "input/mesh_access.h"
#include "model/skin/shell_neighbours.h"
#include "model/skin/shell_search.h"

namespace keld {

namespace {

double normalCosine(int e, int k) {
  return std::abs(elementTable.nx[e] * elementTable.nx[k] + elementTable.ny[e] * elementTable.ny[k] +
                  elementTable.nz[e] * elementTable.nz[k]);
}

bool unflagged(int e) { return shell.elementSplitFlag[e] == 0; }

struct PassRules {
  double leastCosine;     // between the normals of the pair
  bool cosineMayBeEqual;  // to the least one
  double longest;         // in units of the element's thickness
  int kind;               // of the new rows
};

constexpr std::array<PassRules, 4> rulesOfPass{
    {{}, {0.70711, false, 3.0, -1}, {0.7, true, 2.0, -1}, {0.8, true, 2.0, -2}}};

/// Makes the connectors of all passes; keeps what tells quickly whether one is refused.
class ConnectorMaker {
 public:
  explicit ConnectorMaker(const IncidenceLists& trianglesAtNode)
      : trianglesAtNode_(trianglesAtNode),
        boxes_(makeBoxes()),
        radius_(3.0 * shell.characteristicThickness) {}

  void runPass(std::size_t pass) {
    const PassRules& rules = rulesOfPass[pass];
    for (int e = 1; e <= elementTable.elementCount; ++e) {
      const int p = shell.elementPartner[e];
      if (!isTriangle(e) || !unflagged(e) || p <= 0 || !isTriangle(p) || !unflagged(p)) continue;
      const double cosine = normalCosine(e, p);
      if (rules.cosineMayBeEqual ? cosine < rules.leastCosine : cosine <= rules.leastCosine) continue;
      for (const int a : cornerNodesOf(e)) tryCorner(pass, e, p, a);
    }
  }

 private:
  /// Nearest corner of p, a tie going to the later one; 0 when none is in reach.
  int nearestCorner(int p, int a, double& length) const {
    const auto corners = cornerNodesOf(p);
    length = radius_;
    int nearest = 0;
    for (const int b : corners) {
      const double d = distance(positionOf(a), positionOf(b));
      if (shell.connectorUse[b] <= 2 && length >= d) {
        length = d;
        nearest = b;
      }
    }
    return nearest;
  }

  void tryCorner(std::size_t pass, int e, int p, int a) {
    double length = 0.0;
    const int b = nearestCorner(p, a, length);
    if (b == 0) return;
    int first = a, second = b;
    if (pass == 2 && !shell.featureNode[a]) std::swap(first, second);
    if (!endsAllow(pass, first, second)) return;
    if (length > rulesOfPass[pass].longest * elementTable.thickness[e]) return;
    if (!(length < 0.2 * geometry.largestExtent)) return;
    if (onOneTriangle(trianglesAtNode_, a, b) || rows_.contains(rowKey(a, b))) return;
    if (midpointInTriangle(a, b)) return;
    append(first, second, rulesOfPass[pass].kind);
  }

  /// Feature, use and class rules; in pass 2 `first` is the feature end.
  static bool endsAllow(std::size_t pass, int first, int second) {
    const int features = shell.featureNode[first] + shell.featureNode[second];
    const int useFirst = shell.connectorUse[first], useSecond = shell.connectorUse[second];
    const char classFirst = shell.thicknessClass[first], classSecond = shell.thicknessClass[second];
    switch (pass) {
      case 1:
        return features == 2 && useFirst == 0 && useSecond == 0 && classFirst != 2 && classSecond != 2;
      case 2:
        return features == 1 && useFirst < 2 && useSecond == 0 && !(classFirst == 2 && classSecond < 1);
      default:
        return features == 0 && useFirst == 0 && useSecond == 0;
    }
  }

  bool midpointInTriangle(int a, int b) {
    const Vector3 pa = positionOf(a), pb = positionOf(b);
    const Vector3 m = 0.5 * (pa + pb);
    boxes_.candidates(m, candidates_);
    return std::any_of(candidates_.begin(), candidates_.end(), [&](int k) { return liesIn(m, k); });
  }

  bool liesIn(const Vector3& m, int k) const {
    const double d = distance(centre_[k], m);
    if (!(d < radius_)) return false;
    for (std::size_t axis = 0; axis < 3; ++axis)
      if (m[axis] < low_[k][axis] || m[axis] > high_[k][axis]) return false;
    const double alongNormal = ((centre_[k][0] - m[0]) / d) * elementTable.nx[k] +
                               ((centre_[k][1] - m[1]) / d) * elementTable.ny[k] +
                               ((centre_[k][2] - m[2]) / d) * elementTable.nz[k];
    return std::abs(alongNormal) < 0.001;
  }

  void append(int a, int b, int kind) {
    elementTable.node1.push_back(a);
    elementTable.node2.push_back(b);
    elementTable.node3.push_back(0);
    elementTable.thickness.push_back(0.0);
    elementTable.area.push_back(0.0);
    shell.elementKind.push_back(kind);
    ++shell.runningCount;
    ++shell.connectorUse[a];
    ++shell.connectorUse[b];
    rows_.insert(rowKey(a, b));
  }

  static std::uint64_t rowKey(int a, int b) {
    const auto [low, high] = std::minmax(a, b);
    return (static_cast<std::uint64_t>(low) << 32) | static_cast<std::uint32_t>(high);
  }

  BoxGrid makeBoxes() {
    const int count = elementTable.elementCount;
    centre_.assign(count, {});
    low_.assign(count, {1.0, 1.0, 1.0});  // low above high: left out
    high_.assign(count, {0.0, 0.0, 0.0});
    for (int e = 1; e <= elementTable.elementCount; ++e) {
      if (!isTriangle(e)) continue;
      const auto corners = cornerNodesOf(e);
      const Vector3 first = positionOf(corners[0]);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        low_[e][axis] = first[axis] - 1e-5;
        high_[e][axis] = first[axis] + 1e-5;
        double sum = first[axis];
        for (const int corner : {corners[1], corners[2]}) {
          const double value = positionOf(corner)[axis];
          low_[e][axis] = std::min(low_[e][axis], value);
          high_[e][axis] = std::max(high_[e][axis], value);
          sum += value;
        }
        low_[e][axis] -= 1e-4;
        high_[e][axis] += 1e-4;
        centre_[e][axis] = sum / 3.0;
      }
    }
    return BoxGrid(low_, high_);
  }

  const IncidenceLists& trianglesAtNode_;
  Column<Vector3> centre_, low_, high_;
  BoxGrid boxes_;
  double radius_;
  std::unordered_set<std::uint64_t> rows_;
  std::vector<int> candidates_;
};

/// Sum and count of the thicknesses of elements at the two ends, an element with
/// both ends counting twice, in element order.
struct EndThickness {
  double sum = 0.0;
  int count = 0;
};

EndThickness thicknessAtEnds(const IncidenceLists& elementsAtNode, int p, int q) {
  EndThickness result;
  const int *i = elementsAtNode.begin(p), *j = elementsAtNode.begin(q);
  const int *iEnd = elementsAtNode.end(p), *jEnd = elementsAtNode.end(q);
  while (i != iEnd || j != jEnd) {
    const int e = j == jEnd || (i != iEnd && *i <= *j) ? *i : *j;
    for (const int corner : cornerNodesOf(e))
      if (corner == p || corner == q) {
        result.sum += elementTable.thickness[e];
        ++result.count;
      }
    if (i != iEnd && *i == e) ++i;
    if (j != jEnd && *j == e) ++j;
  }
  return result;
}

}  // namespace

void cleanUpPartners() {
  const int count = elementTable.elementCount;
  Column<int> claimant(count, 0), claims(claimant);
  for (int e = 1; e <= count; ++e) {
    const int p = shell.elementPartner[e];
    if (!isTriangle(e) || !unflagged(e) || p <= 0 || !unflagged(p)) continue;
    if (claimant[p] == 0) {
      claimant[p] = e;
      claims[p] = 1;
    } else if (normalCosine(e, p) > 1.05 * normalCosine(e, claimant[p])) {
      claimant[p] = e;
      ++claims[p];
    }
  }
  for (int e = 1; e <= count; ++e) {
    const int p = shell.elementPartner[e];
    if (!isTriangle(e) || !unflagged(e) || p <= 0 || !isTriangle(p) || shell.elementSplitFlag[p] < 0)
      continue;
    if (normalCosine(e, p) < 0.7 && claims[e] == 1) shell.elementPartner[e] = claimant[e];
  }
}

void markFeatureNodes(const IncidenceLists& trianglesAtNode) {
  constexpr int longestList = 99;
  for (int n = 1; n <= nodeTable.nodeCount; ++n) {
    const int listed = std::min(trianglesAtNode.count(n), longestList);
    const int* list = trianglesAtNode.begin(n);
    shell.featureNode[n] =
        std::any_of(list, list + listed, [&](int k) { return normalCosine(list[0], k) <= 0.8; }) ? 1 : 0;
  }
}

void makeConnectors(const IncidenceLists& trianglesAtNode) {
  // Rows of connectors stand right behind those of the file.
  const int rows = elementTable.elementCount;
  for (auto* column : {&elementTable.node1, &elementTable.node2, &elementTable.node3}) column->resize(rows);
  elementTable.thickness.resize(rows);
  elementTable.area.resize(rows);
  shell.elementKind.resize(rows);

  ConnectorMaker maker(trianglesAtNode);
  for (std::size_t pass = 1; pass <= 3; ++pass) maker.runPass(pass);
}

void filterConnectors() {
  double meanLength = 0.0;
  for (int row = elementTable.elementCount + 1; row <= shell.runningCount; ++row) {
    elementTable.area[row] =
        distance(positionOf(elementTable.node1[row]), positionOf(elementTable.node2[row]));
    meanLength += elementTable.area[row];
  }
  if (const int rows = shell.runningCount - elementTable.elementCount; rows > 0) meanLength /= rows;

  const IncidenceLists elementsAtNode = elementsAtNodes(true);
  int kept = elementTable.elementCount;
  double wall = 0.0, ratio = 0.0;  // keep their values from row to row where a row gives none
  for (int row = kept + 1; row <= shell.runningCount; ++row) {
    const double length = elementTable.area[row];
    const EndThickness ends =
        thicknessAtEnds(elementsAtNode, elementTable.node1[row], elementTable.node2[row]);
    if (ends.count > 0) wall = ends.sum / ends.count;
    if (wall > 1e-10) ratio = length / wall;
    const bool tooLong = ratio > 3.0 || (meanLength > 1e-10 && length / meanLength > 3.0) ||
                         length / geometry.largestExtent > 0.5;
    if (tooLong) continue;
    // Nodes and length move down; the kind stays with the slot.
    ++kept;
    elementTable.node1[kept] = elementTable.node1[row];
    elementTable.node2[kept] = elementTable.node2[row];
    elementTable.area[kept] = elementTable.area[row];
  }
  shell.runningCount = kept;
}

}  // namespace keld
