// Thickness repair of a skin mesh; each step reads the column as it was and writes it back at its end.
#include "model/skin/shell_thickness.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "input/mesh_access.h"
#include "model/skin/shell_search.h"

namespace keld {

namespace {

template <class Visit>
void forEachTriangle(Visit visit) {
  for (int e = 1; e <= elementTable.elementCount; ++e)
    if (isTriangle(e)) visit(e);
}

/// Mean thickness of the triangles that `takesPart` accepts; 0 for none.
template <class Condition>
double meanThickness(Condition takesPart) {
  double sum = 0.0;
  int count = 0;
  forEachTriangle([&](int e) {
    if (!takesPart(elementTable.thickness[e])) return;
    sum += elementTable.thickness[e];
    ++count;
  });
  return count > 0 ? sum / count : 0.0;
}

/// Mean thickness of the listed neighbours that `takesPart` accepts; negative for none.
template <class Condition>
double meanOfNeighbours(const IncidenceLists& neighbours, int e, Condition takesPart) {
  double sum = 0.0;
  int count = 0;
  for (const int* k = neighbours.begin(e); k != neighbours.end(e); ++k)
    if (takesPart(elementTable.thickness[*k])) {
      sum += elementTable.thickness[*k];
      ++count;
    }
  return count > 0 ? sum / count : -1.0;
}

Vector3 centroid(int e) {
  const auto corner = cornersOf(e);
  return (corner[0] + corner[1] + corner[2]) / 3.0;
}

/// Replaces each triangle's thickness by the mean of its neighbours when all of them
/// (one at least) satisfy `disagrees`(own, neighbour).
template <class Condition>
void levelAgainstNeighbours(const IncidenceLists& neighbours, Condition disagrees) {
  Column<double> levelled(elementTable.thickness);
  forEachTriangle([&](int e) {
    const double own = elementTable.thickness[e];
    const bool all = neighbours.count(e) > 0 &&
                     std::all_of(neighbours.begin(e), neighbours.end(e),
                                 [&](int k) { return disagrees(own, elementTable.thickness[k]); });
    if (all) levelled[e] = meanOfNeighbours(neighbours, e, [](double) { return true; });
  });
  std::swap(elementTable.thickness, levelled);
}

constexpr int histogramEdges = 1000;

struct Histogram {
  double minimum = 0.0, maximum = 0.0;
  FixedColumn<int, histogramEdges> count;  // [1..999] filled, bin i between edge(i) and edge(i + 1)
  double edge(int i) const { return minimum + (i - 1) * (maximum - minimum) / (histogramEdges - 1); }

  /// Counts into the first bin that holds the value; values outside fall into none.
  void add(double value) {
    const double width = (maximum - minimum) / (histogramEdges - 1);
    const double place = width > 0.0 ? (value - minimum) / width : 0.0;
    int i = static_cast<int>(std::clamp(place, 0.0, histogramEdges - 2.0)) + 1;
    i = std::max(1, i - 1);  // rounding can put the value one bin off
    for (int last = std::min(i + 2, histogramEdges - 1); i <= last; ++i)
      if (edge(i) <= value && value <= edge(i + 1) + 1e-20) {
        ++count[i];
        return;
      }
  }
};

}  // namespace

void fillThicknessGaps(const IncidenceLists& neighbours) {
  for (int round = 0; round < 5; ++round) {
    const double mean = meanThickness([](double t) { return t > 1e-12; });
    Column<double> filled(elementTable.thickness);
    forEachTriangle([&](int e) {
      if (elementTable.thickness[e] >= 1e-12) return;
      const double around = meanOfNeighbours(neighbours, e, [](double t) { return t > 1e-8; });
      filled[e] = around >= 0.0 ? around : mean;
    });
    std::swap(elementTable.thickness, filled);
  }
}

double characteristicThicknessOf(double smallestExtent) {
  std::vector<double> clamped;
  forEachTriangle(
      [&](int e) { clamped.push_back(std::max(1e-8, std::min(elementTable.thickness[e], smallestExtent))); });
  if (clamped.empty()) return 0.0;

  double mean = 0.0;
  for (const double t : clamped) mean += t;
  mean /= static_cast<double>(clamped.size());
  Histogram histogram;
  histogram.minimum = std::max(*std::min_element(clamped.begin(), clamped.end()), mean / 10.0);
  histogram.maximum = std::min(*std::max_element(clamped.begin(), clamped.end()), 10.0 * mean);
  for (const double t : clamped) histogram.add(t);

  double weighted = 0.0, weights = 0.0;
  for (int i = 1; i <= histogramEdges; ++i) {
    const double weight = std::pow(histogram.count[i], 1.5);
    weighted += weight * histogram.edge(i);
    weights += weight;
  }
  // No bin is filled when all values lie beyond the limits, a few very thick ones among very thin ones.
  return 2.0 * (weights > 0.0 ? weighted / weights : mean);
}

void repairThickElements() {
  const double limit = shell.characteristicThickness;
  std::vector<int> thin;
  Column<Vector3> centre(elementTable.elementCount);
  forEachTriangle([&](int e) {
    const double t = elementTable.thickness[e];
    shell.elementSplitFlag[e] = t >= limit || t >= 0.2 * geometry.largestExtent ? 1 : 0;
    centre[e] = centroid(e);
    if (!shell.elementSplitFlag[e]) thin.push_back(e);
  });

  const PointGrid grid(centre, thin);
  Column<double> repaired(elementTable.thickness);
  const double radius = std::min(limit, std::nextafter(1000.0, 2000.0));  // cm, where the search begins
  forEachTriangle([&](int e) {
    if (!shell.elementSplitFlag[e]) return;
    const char nodeClass = elementTable.thickness[e] >= 1.25 * limit ? 2 : 1;
    for (const int n : {elementTable.node1[e], elementTable.node2[e], elementTable.node3[e]})
      shell.thicknessClass[n] = nodeClass;
    if (const int nearest = grid.nearest(centre[e], radius)) repaired[e] = elementTable.thickness[nearest];
  });
  std::swap(elementTable.thickness, repaired);
}

void removeThicknessSpikes(const IncidenceLists& neighbours) {
  levelAgainstNeighbours(neighbours, [](double own, double other) { return 0.5 * other > own; });
  levelAgainstNeighbours(neighbours, [](double own, double other) { return own > 2.0 * other; });
}

void limitThickness(const IncidenceLists& neighbours) {
  Column<double> limited(elementTable.thickness);
  forEachTriangle([&](int e) {
    for (const int* k = neighbours.begin(e); k != neighbours.end(e); ++k)
      if (0.01 * elementTable.thickness[*k] > limited[e]) limited[e] = elementTable.thickness[*k];
  });
  std::swap(elementTable.thickness, limited);

  const double mean = meanThickness([](double) { return true; });
  forEachTriangle([&](int e) {
    double& t = elementTable.thickness[e];
    if (t < 0.001 * mean || t > 3.0 * shell.characteristicThickness) t = mean;
  });
}

}  // namespace keld
