// Small models in memory for the tests and benchmarks of src/model: meshes, neutral fields, a simple polymer.
#pragma once

#include <array>
#include <vector>

#include "model/model_tables.h"
#include "run/base/vector3.h"

namespace keld::testing_support {

/// Nodes and triangles, numbered from 1 in the order of the lists.
struct TestMesh {
  std::vector<Vector3> node;
  std::vector<std::array<int, 3>> triangle;
  double thickness = 0.2;  // cm
};

/// Rectangle of nx x ny cells in the plane z = 0 with one corner at the origin, two triangles a cell,
/// diagonals alternating. With `jitter` inner nodes are moved within the plane by up to that part of a cell.
TestMesh plateMesh(int nx, int ny, double lengthX, double lengthY, double jitter = 0.0);

/// The plate with ribs: every `spacing`th row of cells also carries an
/// upright wall, so that T-junctions arise.
TestMesh ribbedMesh(int nx, int ny, int spacing);

/// Moves every node by x -> rotation x + shift; rows of the rotation are orthonormal.
TestMesh moved(const TestMesh& mesh, const std::array<Vector3, 3>& rotation, const Vector3& shift);

/// A rotation about no axis of the coordinate system.
std::array<Vector3, 3> skewRotation();

/// Fills all input tables: the mesh, neutral stress, side temperatures of 400 K at an ambient temperature of
/// 300 K, and both kinds as an isotropic polymer (E 2e10, nu 0.3, expansion 7e-5) without filler.
void loadModel(const TestMesh& mesh);

/// Gives every part element the same frozen-in stress along its directions.
void setStress(double stress1, double stress2);

/// The steps of the model stage behind the prior results.
void runModelStages();

/// matrix x vector of systemOfPass, both by reduced row from 1.
Column<double> product(const Column<double>& vector);

/// Reduced vector of a displacement field given at the wedge nodes,
/// turned into the restraint frame where needed.
template <class Field>
Column<double> reducedField(const Field& displacementAt) {
  Column<double> u(freedoms.freeDofCount);
  for (int row = 1; row <= u.rows(); ++row) {
    const int dof = freedoms.freeDofList[row], node = (dof - 1) / 3 + 1;
    const auto direction = static_cast<std::size_t>((dof - 1) % 3);
    const Vector3 v = displacementAt(node);
    u[row] = v[direction];
    if (freedoms.nodeRestraint[node] == 1) continue;
    const RestraintFrame& axes = restraintFrames[freedoms.nodeFrame[node]];
    u[row] = dot(std::array{axes.ex, axes.ey, axes.ez}[direction], v);
  }
  return u;
}

}  // namespace keld::testing_support
