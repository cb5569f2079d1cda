// Pattern, assembly and loads on whole small meshes: hand case, plain dense assembly,
// fields with known answer, threads.
#include "model/system/assembly.h"

#include <gmock/gmock.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <cmath>
#include <set>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "input/polymer.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/restraint/restraint.h"
#include "model/system/pattern.h"
#include "model/walls/wedge/wedge_element.h"
#include "support/model_test.h"

namespace keld {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing_support::loadModel;
using testing_support::moved;
using testing_support::plateMesh;
using testing_support::product;
using testing_support::reducedField;
using testing_support::runModelStages;
using testing_support::skewRotation;
using testing_support::TestMesh;

class Assembly : public testing_support::ModelTest {
 protected:
  void assemble(int pass = 1, int passes = 1) {
    runModelStages();
    patternSearch();
    assemblePass(pass, passes);
  }
  /// Directions, orientation and kinds that differ from element to element.
  void varyMaterial() {
    polymerRecord[1].modulus.value[1] = 6e10;
    polymerRecord[1].thermalExpansion.value[1] = 3e-5;
    for (int e = 1; e <= elementTable.elementCount; ++e) {
      const double angle = 0.37 * e, c = std::cos(angle), s = std::sin(angle);
      residualStressField.direction1[e] = {c, s, 0.0};
      residualStressField.direction2[e] = {-s, c, 0.0};
      residualStressField.orientationValue[e] = 0.5 + 0.4 * s;
      residualStressField.kindFraction[e] = e % 3 == 0 ? 0.5 : 0.9;
    }
  }
};

double largestOf(const Column<double>& v) {
  double result = 0.0;
  for (double x : v) result = std::max(result, std::abs(x));
  return result;
}

void expectSolves(const Column<double>& u) {
  const Column<double> forces = product(u);
  const double scale = largestOf(systemOfPass.matrixValue) * largestOf(u);
  ASSERT_GT(largestOf(systemOfPass.rowLoad), 1e-6 * scale);
  for (int row = 1; row <= u.rows(); ++row) {
    EXPECT_NEAR(forces[row], systemOfPass.rowLoad[row], 1e-12 * scale) << "row " << row;
  }
}

// Two triangles   3---4   of wedge nodes 1 2 3, 4 = geometry node 4, mates 5 to 8. Held: 1; one unknown: 4;
// two: 3.
//                 | \ |
//                 1---2
TEST_F(Assembly, HandCaseHasTheToldOrderOfRowsAndColumns) {
  loadModel({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{1, 2, 3}, {2, 4, 3}}, 0.2});
  processRecord.bcNode = {0, 1, 4, 3};
  assemble();

  const auto neighbours = [](int node) {
    const int* all = nodeAdjacency.neighbour.origin();
    return std::vector<int>(all + nodeAdjacency.start[node], all + nodeAdjacency.start[node + 1]);
  };
  EXPECT_THAT(neighbours(1), ElementsAre(1, 2, 3, 5, 6, 7));
  EXPECT_THAT(neighbours(6), ElementsAre(6, 1, 2, 3, 5, 7, 4, 8));
  EXPECT_EQ(nodeAdjacency.capacity, 10 * (4 * 6 + 4 * 8));
  EXPECT_EQ(nodeAdjacency.smallestCount, 6);
  EXPECT_EQ(nodeAdjacency.largestCount, 8);

  EXPECT_THAT(freedoms.nodeFirstRow, ElementsAre(0, 1, 4, 6, 7, 10, 13, 16));
  EXPECT_THAT(std::vector<int>(freedoms.freeDofList.begin(), freedoms.freeDofList.begin() + 7),
              ElementsAre(4, 5, 6, 7, 8, 10, 13));
  EXPECT_THAT(systemOfPass.rowFunction, ElementsAre(1, 2, 3, 1, 2, 1, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3));
  EXPECT_THAT(systemOfPass.rowPoint, ElementsAre(1, 1, 1, 2, 2, 3, 4, 4, 4, 5, 5, 5, 6, 6, 6, 7, 7, 7));

  const auto columns = [](int row) {
    const int* all = systemOfPass.columnIndex.origin();
    return std::vector<int>(all + systemOfPass.rowStart[row], all + systemOfPass.rowStart[row + 1]);
  };
  EXPECT_THAT(columns(2), ElementsAre(2, 3, 1, 4, 5, 7, 8, 9, 10, 11, 12, 13, 14, 15, 6, 16, 17, 18));
  EXPECT_THAT(columns(3), ElementsAre(3, 1, 2, 4, 5, 7, 8, 9, 10, 11, 12, 13, 14, 15, 6, 16, 17, 18));
  // Two unknowns: the first column of the next neighbour, node 2, is rotated with the node's own.
  EXPECT_THAT(columns(4), ElementsAre(4, 5, 1, 2, 3, 7, 8, 9, 10, 11, 12, 13, 14, 15, 6, 16, 17, 18));
  EXPECT_THAT(columns(5), ElementsAre(5, 1, 4, 2, 3, 7, 8, 9, 10, 11, 12, 13, 14, 15, 6, 16, 17, 18));
  EXPECT_THAT(columns(6), ElementsAre(6, 1, 2, 3, 4, 5, 10, 11, 12, 16, 17, 18, 13, 14, 15));
}

TEST_F(Assembly, EqualsADenseAssemblyOfTheElements) {
  loadModel(moved(testing_support::ribbedMesh(6, 4, 2), skewRotation(), {1, 2, 3}));
  varyMaterial();
  testing_support::setStress(2e7, -1e7);
  assemble(2, 2);

  // Full matrix over all freedoms in global axes, then the held ones left out.
  Column<Column<double>> full(freedoms.dofCount, Column<double>(freedoms.dofCount));
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const ResidualStressField& field = residualStressField;
    const auto& c = materialConstants[field.kindFraction[e] > 0.5 ? 1 : 2].stiffness;
    ElementMatrix element;
    formStiffness(wedgeGeometry(cornersOf(e), elementTable.thickness[e], 0.0),
                  rotatedStiffness(orientationAverage(c, field.orientationValue[e]),
                                   {field.direction1[e], field.direction2[e], field.direction3[e]}),
                  element);
    ElementLoad unused{};
    std::array<bool, 6> inFrame{};
    const auto nodes = wedgeNodesOf(e);
    for (std::size_t i = 0; i < 6; ++i) {
      inFrame[i] = freedoms.nodeRestraint[nodes[i]] <= -2;
    }
    changeBasis(inFrame, restraintFrames[1], &element, unused);
    const auto freedom = [&](std::size_t i) { return 3 * nodes[i / 3] - 2 + static_cast<int>(i % 3); };
    for (std::size_t i = 0; i < 18; ++i) {
      for (std::size_t j = 0; j < 18; ++j) full[freedom(i)][freedom(j)] += element[18 * i + j];
    }
  }
  for (int row = 1; row <= freedoms.freeDofCount; ++row) {
    std::set<int> columns;
    for (int p = systemOfPass.rowStart[row]; p < systemOfPass.rowStart[row + 1]; ++p) {
      const int column = systemOfPass.columnIndex[p];
      EXPECT_TRUE(columns.insert(column).second) << "a column twice";
      double& reference = full[freedoms.freeDofList[row]][freedoms.freeDofList[column]];
      EXPECT_NEAR(systemOfPass.matrixValue[p], reference, 1e-12 * largestOf(systemOfPass.matrixValue));
      reference = 0.0;
    }
    EXPECT_EQ(systemOfPass.columnIndex[systemOfPass.rowStart[row]], row);
  }
  double missed = 0.0;  // entries of free pairs that the pattern doesn't hold
  for (const int i : freedoms.freeDofList)
    for (const int j : freedoms.freeDofList) missed = std::max(missed, std::abs(full[i][j]));
  EXPECT_EQ(missed, 0.0);
}

// The displacement that leaves a stress-free part, taken from boundary
// node 1 and turned so that the frame holds.
TEST_F(Assembly, UniformCoolingOfAFlatPlateIsSolvedByFreeShrinkage) {
  loadModel(moved(plateMesh(7, 5, 6.0, 4.0, 0.3), skewRotation(), {5, -4, 3}));
  assemble();
  const Vector3 origin = positionOf(boundaryNodes[1].boundaryNode1);
  const double strain = 7e-5 * (300.0 - 400.0), half = 0.1;
  const auto layer = [](int node) { return node > wedgeNumbering.wedgeNodeCount / 2 ? 1.0 : -1.0; };
  const Vector3 normal = wedgeOffset(cornersOf(1), 1.0).d;  // half a unit normal
  expectSolves(reducedField([&](int node) {
    return strain * (positionOf(node) - origin + ((layer(node) + 1.0) * half) * (2.0 * normal));
  }));
}

TEST_F(Assembly, UniformStressInThePlaneIsSolvedByTheStrainOfTheCompliance) {
  loadModel(plateMesh(6, 4, 6.0, 4.0, 0.3));
  testing_support::setStress(4e7, 0.0);
  assemble(1, 2);
  const Vector3 origin = positionOf(boundaryNodes[1].boundaryNode1);
  // Relief of sxx = 4e7: strains -s/E, +nu s/E, +nu s/E. The frame turns: rotation keeps node 2 on its line.
  const double e = 4e7 / 2e10;
  const Vector3 p2 = positionOf(boundaryNodes[1].boundaryNode2) - origin;
  const Vector3 u2 = {-e * p2[0], 0.3 * e * p2[1], 0.0};
  const double spin = (p2[0] * u2[1] - p2[1] * u2[0]) / dot(p2, p2);
  expectSolves(reducedField([&](int node) {
    const Vector3 p = positionOf(node) - origin;
    const double z = node > wedgeNumbering.wedgeNodeCount / 2 ? 0.2 : 0.0;
    return Vector3{-e * p[0] + spin * p[1], 0.3 * e * p[1] - spin * p[0], 0.3 * e * z};
  }));
}

#ifdef _OPENMP
TEST_F(Assembly, ThreadsAndLoadAloneGiveTheSameBits) {
  const int standard = omp_get_max_threads();
  Column<double> matrix, stressLoad, fullLoad;
  Column<int> columns;
  for (int threads : {1, 2, 3}) {
    omp_set_num_threads(threads);
    loadModel(testing_support::ribbedMesh(40, 20, 4));  // several blocks of elements
    varyMaterial();
    testing_support::setStress(2e7, -1e7);
    assemble(1, 2);
    if (threads == 1) {
      matrix = systemOfPass.matrixValue;
      columns = systemOfPass.columnIndex;
      stressLoad = systemOfPass.rowLoad;
    }
    EXPECT_EQ(systemOfPass.rowLoad, stressLoad) << threads;
    assemblePass(2, 2);
    if (threads == 1) fullLoad = systemOfPass.rowLoad;
    EXPECT_EQ(systemOfPass.matrixValue, matrix) << threads;
    EXPECT_EQ(systemOfPass.columnIndex, columns) << threads;
    EXPECT_EQ(systemOfPass.rowLoad, fullLoad) << threads;
    releasePattern();
    assembleLoad(1, 2);
    EXPECT_EQ(systemOfPass.rowLoad, stressLoad) << threads;
    assembleLoad(2, 2);
    EXPECT_EQ(systemOfPass.rowLoad, fullLoad) << threads;
  }
  EXPECT_NE(stressLoad, fullLoad);
  omp_set_num_threads(standard);
}
#endif

TEST_F(Assembly, NegativeDiagonalsTurnTheirRowsInMatrixAndLoad) {
  loadModel(plateMesh(2, 2, 2.0, 2.0));
  assemble();
  const CompressedSystem normal = systemOfPass;
  loadModel(plateMesh(2, 2, 2.0, 2.0));
  runModelStages();
  for (auto& row : materialConstants[1].stiffness) {
    for (double& value : row) value = -value;
  }
  patternSearch();
  assemblePass(1, 1);
  EXPECT_EQ(systemOfPass.matrixValue, normal.matrixValue);
  EXPECT_EQ(systemOfPass.rowLoad, normal.rowLoad);
  assembleLoad(1, 1);
  EXPECT_EQ(systemOfPass.rowLoad, normal.rowLoad);
}

TEST_F(Assembly, EntriesThatAreNotFiniteEndTheRunWithTheirElement) {
  loadModel(plateMesh(3, 3, 3.0, 3.0));
  varyMaterial();
  residualStressField.orientationValue[7] = 1e200;
  EXPECT_THAT(failureOf([this] { assemble(); }), HasSubstr("part element 7 "));
  loadModel(plateMesh(3, 3, 3.0, 3.0));
  residualStressField.stress1[5] = 1e308;
  elementTable.thickness[5] = 1e10;
  EXPECT_THAT(failureOf([this] { assemble(); }), HasSubstr("part element 5 "));
}

}  // namespace
}  // namespace keld
