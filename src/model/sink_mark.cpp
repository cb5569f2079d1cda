// The sink mark of each wedge node. First act of the results stage.
#include "model/sink_mark.h"

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/walls/wedge/wedge_shape.h"
#include "run/base/vector3.h"

namespace keld {

namespace {

/// Mean of in-mold and total displacement over three nodes, the two added; each term is divided before the
/// adding.
Vector3 meanDisplacement(const std::array<int, 3>& node) {
  Vector3 mean{};
  for (int n : node) {
    for (int c = 0; c < 3; ++c) {
      const int dof = freedoms.nodeFirstDof[n] + c;
      mean[c] += (solution.displacementInMold[dof] + solution.displacementTotal[dof]) / 3.0;
    }
  }
  return mean;
}

}  // namespace

double sinkVolume(double thickness, double deformedThickness, double area) {
  const double reached = deformedThickness > thickness ? thickness : deformedThickness;
  return thickness * area / 3.0 * (reached - thickness);
}

void sinkMark() {
  std::vector<double>& mark = solution.rowSolution;
  mark.assign(static_cast<std::size_t>(wedgeNumbering.wedgeNodeCount) + 1, 0.0);
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const std::array<int, 6> node = wedgeNodesOf(e);
    const std::array<int, 3> lower = {node[0], node[1], node[2]}, upper = {node[3], node[4], node[5]};
    const std::array<Vector3, 3> corner = cornersOf(e);
    const Vector3 wall = 2.0 * offsetVector(e) + meanDisplacement(upper) - meanDisplacement(lower);
    const double volume =
        sinkVolume(elementTable.thickness[e], norm(wall), triangleArea(corner[0], corner[1], corner[2]));
    for (int n : lower) {
      if (volumes.nodalVolume[n] > 0.0) mark[n] -= volume / volumes.nodalVolume[n];
    }
  }
}

}  // namespace keld
