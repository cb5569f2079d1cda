// The volume pass; see the header.
#include "model/system/loads.h"

#include <cmath>
#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "input/prior_fields.h"
#include "model/model_tables.h"
#include "model/walls/wedge/wedge_shape.h"
#include "run/base/column.h"
#include "run/base/element_warnings.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

struct BadElement {
  int element = 0;
  bool degenerate = false;
  double determinant = 0.0;  // cm3, at or below 0
};
std::vector<BadElement> badElements;  // in element order; written by the volume pass

Column<double> determinants() {
  Column<double> result(elementTable.partElementCount);
#pragma omp parallel for schedule(static)
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const auto corner = cornersOf(e);
    result[e] = wedgeJacobian(corner, wedgeOffset(corner, elementTable.thickness[e]).d).determinant;
  }
  return result;
}

void noteElement(int element, double determinant) {
  if (!std::isfinite(determinant)) {
    vFail(
        "\n !! Error !!  The volume of part element %d isn't a finite number: "
        "check the coordinates of its nodes and its thickness in \"%s\".\n",
        element, workingFiles.pg1.c_str());
  }
  if (determinant > 0.0) return;
  const bool degenerate = wedgeOffset(cornersOf(element), elementTable.thickness[element]).degenerate;
  badElements.push_back({element, degenerate, determinant});
}

void addNodalShares(int element, double volume) {
  const ElementTable& t = elementTable;
  const double share = volume / 6.0;
  const auto add = [&](int node, double temperature) {
    volumes.nodalTemperature[node] += temperature * share;
    volumes.nodalVolume[node] += share;
  };
  for (const auto* column : {&t.node1, &t.node2, &t.node3}) {
    add((*column)[element], elementTemperatureField.sideTemperature1[element]);
  }
  for (const auto* column : {&t.node4, &t.node5, &t.node6}) {
    add((*column)[element], elementTemperatureField.sideTemperature2[element]);
  }
}

}  // namespace

void volumePass() {
  const int nodes = wedgeNumbering.wedgeNodeCount;
  volumes.nodalTemperature.assign(nodes, 0.0);
  volumes.nodalVolume.assign(nodes, 0.0);
  volumes.elementVolumeTotal = volumes.meanJacobian = 0.0;
  badElements.clear();

  const Column<double> determinant = determinants();
  double positiveSum = 0.0;
  int positiveCount = 0;
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const double value = determinant[e];
    noteElement(e, value);
    // One determinant holds at all points of an element.
    const double volume = value * integrationTable.weightSum;
    volumes.elementVolumeTotal += volume;
    if (value > 0.0) {
      positiveSum += value;
      ++positiveCount;
    }
    addNodalShares(e, volume);
  }
  reportBadElements();
  if (positiveCount == 0) {
    vFail(
        "\n !! Error !!  No part element of \"%s\" has a positive "
        "volume: check thickness and node coordinates.\n",
        workingFiles.pg1.c_str());
  }
  volumes.meanJacobian = positiveSum / positiveCount;
  for (int n = 1; n <= nodes; ++n) {
    if (volumes.nodalVolume[n] > 0.0) volumes.nodalTemperature[n] /= volumes.nodalVolume[n];
  }
}

void reportBadElements() {
  for (const BadElement& bad : badElements) {
    const long number = bad.element;
    for (int point = 0; point < integrationPointCount; ++point) {
      if (bad.degenerate) vWarnOfElement(ElementWarning::D5015, message::D5015, number);
      vWarnOfElement(ElementWarning::D5016, message::D5016, number, bad.determinant);
    }
  }
}

}  // namespace keld
