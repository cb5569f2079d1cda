// The wedge as a wall model; see the header.
#include "model/walls/wedge/wedge_wall.h"

#include "input/mesh_access.h"
#include "model/walls/wedge/wedge_element.h"

namespace keld {

namespace {

Matrix3 tensorOf(const Matrix6& d, const Vector6& strain) {
  Vector6 q{};
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 6; ++j) q[i] += d[i][j] * strain[j];
  }
  return {{{q[0], q[3], q[4]}, {q[3], q[1], q[5]}, {q[4], q[5], q[2]}}};
}

/// Mean of in-mold and total displacement over three nodes, the two added;
/// each term is divided before the adding.
Vector3 meanDisplacement(const std::array<int, 3>& node) {
  Vector3 mean{};
  for (int n : node) {
    const int dof = freedoms.nodeFirstDof[n];
    const double *inMold = &solution.displacementInMold[dof], *total = &solution.displacementTotal[dof];
    for (std::size_t c = 0; c < 3; ++c) mean[c] += (inMold[c] + total[c]) / 3.0;
  }
  return mean;
}

}  // namespace

void WedgeWall::form(const WallElement& element, ElementMatrix* k, ElementLoad& f) const {
  const WedgeGeometry wedge = wedgeGeometry(element.corner, element.thickness, volumes.meanJacobian);
  ElementLoading loading;
  loading.thermal = element.thermal;
  loading.stress = stressTensor(element.stress1, element.stress2, element.axes[0], element.axes[1]);
  if (k != nullptr || element.thermal) {
    const Matrix6 d = rotatedStiffness(element.stiffness, element.axes);
    if (k != nullptr) formStiffness(wedge, d, *k);
    if (element.thermal) {
      loading.unitThermal = tensorOf(d, rotatedExpansion(element.expansion, element.axes));
      loading.ambientTemperature = element.ambientTemperature;
      loading.nodeTemperature = element.nodeTemperature;
    }
  }
  formLoad(wedge, loading, f);
}

double WedgeWall::deformedThickness(int element) const {
  const std::array<int, 6> node = wedgeNodesOf(element);
  const std::array<int, 3> lower = {node[0], node[1], node[2]}, upper = {node[3], node[4], node[5]};
  return norm(2.0 * offsetVector(element) + meanDisplacement(upper) - meanDisplacement(lower));
}

}  // namespace keld
