// The sink mark of each wedge node. First act of the results stage.
#include "model/sink_mark.h"

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/walls/wall_model.h"
#include "run/base/vector3.h"

namespace keld {

double sinkVolume(double thickness, double deformedThickness, double area) {
  const double reached = deformedThickness > thickness ? thickness : deformedThickness;
  return thickness * area / 3.0 * (reached - thickness);
}

void sinkMark() {
  Column<double>& mark = solution.rowSolution;
  mark.assign(wedgeNumbering.wedgeNodeCount, 0.0);
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const std::array<Vector3, 3> corner = cornersOf(e);
    const double volume = sinkVolume(elementTable.thickness[e], wallModel().deformedThickness(e),
                                     triangleArea(corner[0], corner[1], corner[2]));
    for (int n : cornerNodesOf(e)) {
      if (volumes.nodalVolume[n] > 0.0) mark[n] -= volume / volumes.nodalVolume[n];
    }
  }
}

}  // namespace keld
