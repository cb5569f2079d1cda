// The sink mark of a Shell run; see the header.
#include "model/skin/shell_sink_mark.h"

#include <cmath>
#include <numbers>

#include "input/mesh_access.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/material/material.h"
#include "model/model_tables.h"

namespace keld {

namespace {

/// Sums over the elements at a node, weighted by their share of volume.
struct NodeState {
  double volume = 0.0, temperature = 0.0, kindFraction = 0.0;
  void add(double share, double elementTemperature, double elementFraction) {
    volume += share;
    temperature += elementTemperature * share;
    kindFraction += elementFraction * share;
  }
};

double mixedDensity(double kindFraction, double temperature) {
  constexpr double pressure = 1e6;  // dyn/cm2
  const double second = processRecord.secondKind == 1 ? density(2, pressure, temperature) : 0.0;
  return kindFraction * density(1, pressure, temperature) + (1.0 - kindFraction) * second;
}

double sinkOf(const NodeState& state) {
  if (!(state.volume > 0.0)) return 0.0;
  const double fraction = state.kindFraction / state.volume;
  const double v = 1.0 / mixedDensity(fraction, state.temperature / state.volume);
  const double v0 = 1.0 / mixedDensity(fraction, 298.0);
  return std::cbrt(v) * (v - v0) / v / 3.0;
}

void addTriangles(Column<NodeState>& states) {
  const ElementTemperatureField& side = elementTemperatureField;
  const bool twoKinds = processRecord.secondKind == 1;
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const auto corner = cornersOf(e);
    const double area = 0.5 * norm(cross(corner[1] - corner[0], corner[2] - corner[0]));
    const double share = area * elementTable.thickness[e] / 3.0;
    const double temperature = (side.sideTemperature1[e] + side.sideTemperature2[e]) / 2.0;
    for (const int n : {elementTable.node1[e], elementTable.node2[e], elementTable.node3[e]})
      states[n].add(share, temperature, twoKinds ? residualStressField.kindFraction[e] : 1.0);
  }
}

/// Runner elements have no entry in the element fields: they count with the neutral values.
void addRunners(Column<NodeState>& states) {
  for (int e = elementTable.partElementCount + 1; e <= elementTable.elementCount; ++e) {
    const int a = elementTable.node1[e], b = elementTable.node2[e];
    const double diameter = elementTable.thickness[e];
    const double share =
        std::numbers::pi * diameter * diameter * distance(positionOf(a), positionOf(b)) * 0.125;
    for (const int n : {a, b})
      if (n <= states.rows()) states[n].add(share, processRecord.ambientTemperature, 1.0);
  }
}

}  // namespace

void shellSinkMark() {
  Column<NodeState> states(wedgeNumbering.wedgeNodeCount);
  addTriangles(states);
  addRunners(states);
  solution.rowSolution.assign(states.rows(), 0.0);
  for (int n = 1; n <= states.rows(); ++n) solution.rowSolution[n] = sinkOf(states[n]);
}

}  // namespace keld
