// Small models in memory; see the header.
#include "support/model_maker.h"

#include <random>

#include "input/mesh_tables.h"
#include "input/polymer.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/material/material.h"
#include "model/restraint/restraint.h"
#include "model/walls/wall_model.h"
#include "model/walls/wedge/wedge_numbering.h"
#include "model/walls/wedge/wedge_shape.h"

namespace keld::testing_support {

namespace {

void addCell(TestMesh& mesh, int a, int b, int c, int d, bool turned) {
  if (turned) {
    mesh.triangle.push_back({a, b, d});
    mesh.triangle.push_back({b, c, d});
  } else {
    mesh.triangle.push_back({a, b, c});
    mesh.triangle.push_back({a, c, d});
  }
}

CountedList listOf(std::initializer_list<double> values) {
  CountedList list;
  for (double value : values) list.value[++list.count] = value;
  return list;
}

}  // namespace

TestMesh plateMesh(int nx, int ny, double lengthX, double lengthY, double jitter) {
  TestMesh mesh;
  std::mt19937 generator(7);
  std::uniform_real_distribution<double> move(-jitter, jitter);
  for (int i = 0; i <= nx; ++i) {
    for (int j = 0; j <= ny; ++j) {
      const bool inner = i > 0 && i < nx && j > 0 && j < ny;
      const double dx = inner ? move(generator) : 0.0, dy = inner ? move(generator) : 0.0;
      mesh.node.push_back({lengthX * (i + dx) / nx, lengthY * (j + dy) / ny, 0.0});
    }
  }
  const auto at = [ny](int i, int j) { return i * (ny + 1) + j + 1; };
  for (int i = 0; i < nx; ++i) {
    for (int j = 0; j < ny; ++j) {
      addCell(mesh, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1), (i + j) % 2 == 1);
    }
  }
  return mesh;
}

TestMesh ribbedMesh(int nx, int ny, int spacing) {
  TestMesh mesh = plateMesh(nx, ny, 0.5 * nx, 0.5 * ny);
  for (int i = spacing; i < nx; i += spacing) {
    const int foot = i * (ny + 1) + 1, top = static_cast<int>(mesh.node.size()) + 1;
    for (int j = 0; j <= ny; ++j) mesh.node.push_back({0.5 * i, 0.5 * j, 0.6});
    for (int j = 0; j < ny; ++j) addCell(mesh, foot + j, foot + j + 1, top + j + 1, top + j, j % 2 == 1);
  }
  return mesh;
}

TestMesh moved(const TestMesh& mesh, const std::array<Vector3, 3>& rotation, const Vector3& shift) {
  TestMesh result = mesh;
  for (Vector3& p : result.node)
    p = Vector3{dot(rotation[0], p), dot(rotation[1], p), dot(rotation[2], p)} + shift;
  return result;
}

std::array<Vector3, 3> skewRotation() {
  const Vector3 a = (1.0 / norm({1.0, 2.0, -0.5})) * Vector3{1.0, 2.0, -0.5};
  const Vector3 b = cross(a, {0.3, 0.1, 1.0});
  const Vector3 unit = (1.0 / norm(b)) * b;
  return {a, unit, cross(a, unit)};
}

void loadModel(const TestMesh& mesh) {
  elementTable = {};
  nodeTable = {};
  processRecord = {};
  processRecord.ambientTemperature = 300.0;
  processRecord.meltTemperature = {500.0, 500.0};
  fillerValues = {};
  nodeTable.nodeCount = static_cast<int>(mesh.node.size());
  for (const Vector3& p : mesh.node) {
    nodeTable.x.push_back(p[0]);
    nodeTable.y.push_back(p[1]);
    nodeTable.z.push_back(p[2]);
  }
  elementTable.elementCount = elementTable.partElementCount = static_cast<int>(mesh.triangle.size());
  for (const auto& triangle : mesh.triangle) {
    elementTable.node1.push_back(triangle[0]);
    elementTable.node2.push_back(triangle[1]);
    elementTable.node3.push_back(triangle[2]);
  }
  const int rows = elementTable.elementCount;
  elementTable.thickness.assign(rows, mesh.thickness);

  residualStressValid = 0;
  ResidualStressField& field = residualStressField;
  field.stress1.assign(rows, 0.0);
  field.stress2.assign(rows, 0.0);
  field.kindFraction.assign(rows, 1.0);
  field.orientationValue.assign(rows, 1.0);
  field.direction1.assign(rows, {1.0, 0.0, 0.0});
  field.direction2.assign(rows, {0.0, 1.0, 0.0});
  field.direction3.assign(rows, {0.0, 0.0, 1.0});
  elementTemperatureField.sideTemperature1.assign(rows, 400.0);
  elementTemperatureField.sideTemperature2.assign(rows, 400.0);

  PolymerRecord polymer;
  polymer.pvt = listOf({1.0});
  polymer.thermalExpansion = listOf({7e-5, 7e-5});
  polymer.modulus = listOf({2e10, 2e10});
  polymer.poisson = listOf({0.3, 0.3});
  polymer.shearModulus = listOf({2e10 / 2.6});
  polymerRecord[1] = polymerRecord[2] = polymer;
}

void setStress(double stress1, double stress2) {
  residualStressValid = 1;
  for (double& value : residualStressField.stress1) value = stress1;
  for (double& value : residualStressField.stress2) value = stress2;
}

void runModelStages() {
  fillIntegrationTables();
  chooseWalls();
  selectBoundaryNodes(wallModel().joining());
  renumberWedgeNodes();
  numberFreedoms();
  setUpRestraint();
  materialSetup();
  prepareWalls();
}

Column<double> product(const Column<double>& vector) {
  Column<double> result(vector.rows());
  for (int row = 1; row <= vector.rows(); ++row) {
    for (int p = systemOfPass.rowStart[row]; p < systemOfPass.rowStart[row + 1]; ++p)
      result[row] += systemOfPass.matrixValue[p] * vector[systemOfPass.columnIndex[p]];
  }
  return result;
}

}  // namespace keld::testing_support
