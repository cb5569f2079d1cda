// The six-node wedge: integration table, shape values, offset vector, Jacobian.
// A wedge is the triangle of its nodes, moved by -d for the lower and by +d for the upper layer.
#pragma once

#include <array>

#include "model/model_tables.h"
#include "run/base/vector3.h"

namespace keld {

/// Gauss points on the reference wedge: 7 on the triangle of area 1/2 (Radon 1948, degree 5), 3 through the
/// thickness (Gauss-Legendre, degree 5). Weights sum to 1, the volume of the reference wedge.
struct IntegrationTable {
  std::array<double, 7> r{}, s{}, triangleWeight{};
  std::array<double, 3> t{}, thicknessWeight{};
  double weightSum = 0.0;
};

/// Written by fillIntegrationTables, the first act of the model stage.
extern IntegrationTable integrationTable;
void fillIntegrationTables();

/// Points of an element; each is visited, triangle point outer, thickness point inner.
constexpr int integrationPointCount = 21;

/// Values and derivatives with respect to (r, s, t) of the six shape functions.
struct ShapeValues {
  std::array<double, 6> value{};
  std::array<Vector3, 6> derivative{};
};
ShapeValues shapeValues(double r, double s, double t);

/// Half the wall as a vector: thickness/2 along the triangle's normal. `degenerate` marks a triangle without
/// area, whose vector is thickness x cross product (0 as a rule).
struct WedgeOffset {
  Vector3 d{};
  bool degenerate = false;
};
WedgeOffset wedgeOffset(const std::array<Vector3, 3>& corner, double thickness);

/// The offset vector of a part element; reports D5015 when the triangle is degenerate. Main thread only.
Vector3 offsetVector(int element);

/// Jacobian of the map from (r, s, t). The two layers are shifted copies of one triangle, so that its rows
/// are edge 1-2, edge 1-3 and the offset vector at every point of the element.
struct WedgeJacobian {
  std::array<Vector3, 3> row{};
  double determinant = 0.0;  // cm3; twice the triangle's area x half the thickness
};
WedgeJacobian wedgeJacobian(const std::array<Vector3, 3>& corner, const Vector3& offset);

/// Columns of the inverse, adjugate / determinantInUse: the gradients of r, s and t in global axes.
std::array<Vector3, 3> referenceGradients(const WedgeJacobian& jacobian, double determinantInUse);

}  // namespace keld
