// The six-node wedge: integration table, shape values, offset vector, Jacobian; see the header.
#include "model/walls/wedge/wedge_shape.h"

#include <cmath>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "run/base/element_warnings.h"
#include "run/base/messages.h"

namespace keld {

IntegrationTable integrationTable;

void fillIntegrationTables() {
  IntegrationTable& table = integrationTable;
  const double q = std::sqrt(15.0);
  const double a = (6.0 + q) / 21.0, b = (6.0 - q) / 21.0;
  table.r = {1.0 / 3.0, a, 1.0 - 2.0 * a, a, b, 1.0 - 2.0 * b, b};
  table.s = {1.0 / 3.0, a, a, 1.0 - 2.0 * a, b, b, 1.0 - 2.0 * b};
  const double near = (155.0 + q) / 2400.0, far = (155.0 - q) / 2400.0;
  table.triangleWeight = {0.1125, near, near, near, far, far, far};
  table.t = {-std::sqrt(0.6), 0.0, std::sqrt(0.6)};
  table.thicknessWeight = {5.0 / 9.0, 8.0 / 9.0, 5.0 / 9.0};
  table.weightSum = 0.0;
  for (double wi : table.triangleWeight) {
    for (double wj : table.thicknessWeight) table.weightSum += wi * wj;
  }
}

ShapeValues shapeValues(double r, double s, double t) {
  const double l = 1.0 - r - s, a = 0.5 * (1.0 - t), b = 0.5 * (1.0 + t);
  return {{a * l, a * r, a * s, b * l, b * r, b * s},
          {{{-a, -a, -0.5 * l},
            {a, 0.0, -0.5 * r},
            {0.0, a, -0.5 * s},
            {-b, -b, 0.5 * l},
            {b, 0.0, 0.5 * r},
            {0.0, b, 0.5 * s}}}};
}

WedgeOffset wedgeOffset(const std::array<Vector3, 3>& corner, double thickness) {
  constexpr double tiny = 1e-30;
  Vector3 c = cross(corner[1] - corner[0], corner[2] - corner[0]);
  for (double& component : c) {
    if (std::abs(component) < tiny) component = 0.0;
  }
  const double length = norm(c);
  if (length < tiny) return {thickness * c, true};
  return {(0.5 * thickness / length) * c, false};
}

Vector3 offsetVector(int element) {
  const WedgeOffset offset = wedgeOffset(cornersOf(element), elementTable.thickness[element]);
  if (offset.degenerate) {
    vWarnOfElement(ElementWarning::D5015, message::D5015, static_cast<long>(element));
  }
  return offset.d;
}

WedgeJacobian wedgeJacobian(const std::array<Vector3, 3>& corner, const Vector3& offset) {
  WedgeJacobian jacobian{{corner[1] - corner[0], corner[2] - corner[0], offset}, 0.0};
  const auto& [e12, e13, d] = jacobian.row;
  jacobian.determinant = dot(cross(e12, e13), d) + 0.0;  // + 0.0: no negative zero reaches a message
  return jacobian;
}

std::array<Vector3, 3> referenceGradients(const WedgeJacobian& jacobian, double determinantInUse) {
  const auto& [e12, e13, d] = jacobian.row;
  const double scale = 1.0 / determinantInUse;
  return {scale * cross(e13, d), scale * cross(d, e12), scale * cross(e12, e13)};
}

}  // namespace keld
