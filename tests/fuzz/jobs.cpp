// Fuzz target of whole small jobs: mesh, material, fields and settings from random bytes go through all
// stages behind the readers, by the direct solver and by TIER. Meshes come in pieces, with needles, folded
// and doubled triangles and walls of any thickness. A job ends with finite rows or with a message; where both
// solvers finish a plain part, they agree.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/readers.h"
#include "input/geometry_statistics.h"
#include "input/mesh_tables.h"
#include "input/polymer.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/sink_mark.h"
#include "results/result_rows.h"
#include "results/summary.h"
#include "run/base/failure.h"
#include "run/base/working_files.h"
#include "support/model_maker.h"
#include "tier/api/tier.h"

namespace {

using fuzz::choices;
using fuzz::require;
using keld::Vector3;
using keld::operator+;
using keld::operator-;
using keld::operator*;
using keld::testing_support::TestMesh;

void append(TestMesh& mesh, const TestMesh& other, const Vector3& shift) {
  const int before = static_cast<int>(mesh.node.size());
  for (const Vector3& p : other.node) mesh.node.push_back(p + shift);
  for (const auto& t : other.triangle) mesh.triangle.push_back({t[0] + before, t[1] + before, t[2] + before});
}

std::size_t any(choices& c, std::size_t count) {
  return static_cast<std::size_t>(c.below(static_cast<int>(std::min<std::size_t>(count, 255))));
}

/// One fault of the kinds that meshes of practice have.
void spoil(choices& c, TestMesh& mesh) {
  auto& triangle = mesh.triangle[any(c, mesh.triangle.size())];
  const auto node = [&](std::size_t corner) -> Vector3& {
    return mesh.node[static_cast<std::size_t>(triangle[corner]) - 1];
  };
  switch (c.below(7)) {
    case 0:  // a needle, or two nodes in one place
      node(0) = node(1) + c.of({0.0, 1e-12, 1e-8, 1e-4, 1e-2}) * (node(0) - node(1));
      break;
    case 1:  // a flat triangle
      node(2) = 0.5 * (node(0) + node(1)) + c.of({0.0, 1e-9, 1e-5}) * node(2);
      break;
    case 2:
      triangle[1] = triangle[0];
      break;
    case 3:
      std::swap(triangle[0], triangle[1]);
      break;
    case 4:
      mesh.triangle.push_back(triangle);
      break;
    case 5:  // joined to anything by an edge or a corner
      for (int i = 1 + c.below(3); i > 0; --i)
        triangle[any(c, 3)] = 1 + static_cast<int>(any(c, mesh.node.size()));
      break;
    default:
      mesh.triangle.erase(mesh.triangle.begin() + (&triangle - mesh.triangle.data()));
      if (mesh.triangle.empty()) mesh = keld::testing_support::plateMesh(1, 1, 1.0, 1.0);
  }
}

/// Returns whether the mesh is one that a user would call good.
bool makeMesh(choices& c, TestMesh& mesh) {
  const int nx = 1 + c.below(4), ny = 1 + c.below(4);
  mesh = c.below(3) == 0 ? keld::testing_support::ribbedMesh(nx + 1, ny, 1 + c.below(2))
                         : keld::testing_support::plateMesh(nx, ny, 1.0 * nx, 0.8 * ny, 0.2);
  mesh.thickness = c.of({0.2, 0.1, 0.4});
  bool plain = true;
  for (int pieces = c.below(8) / 5; pieces > 0; --pieces)  // beside each other, or in one place
    append(mesh, keld::testing_support::plateMesh(1, 1 + c.below(2), 1.0, 1.0),
           Vector3{0, 0, 3.0 * c.below(2)});
  if (c.below(3) == 0)
    mesh = keld::testing_support::moved(mesh, keld::testing_support::skewRotation(), {1, 2, 3});
  for (int faults = c.below(6) - 2; faults > 0; --faults, plain = false) spoil(c, mesh);
  if (c.seldom()) {
    const double scale = c.of({1e-9, 1e-4, 1e4, 1e9});
    for (Vector3& p : mesh.node) p = scale * p;
    plain = false;
  }
  return plain;
}

/// Returns whether all walls are of a usual thickness.
bool setThickness(choices& c) {
  bool plain = true;
  for (double& h : keld::elementTable.thickness) {
    h *= 1.0 + 0.01 * c.below(50);
    if (!c.seldom() || !c.seldom()) continue;
    h = c.of({0.0, 1e-12, 1e-5, 20.0, 1e8});
    plain = false;
  }
  return plain;
}

void setList(choices& c, keld::CountedList& list, std::initializer_list<double> from, int least) {
  list.count = least + c.below(3);
  for (int i = 1; i <= list.count; ++i) list.value[i] = c.of(from);
}

bool setMaterial(choices& c) {
  keld::ProcessRecord& r = keld::processRecord;
  bool plain = true;
  r.secondKind = c.below(2);
  for (int kind = 1; kind <= 2; ++kind) {
    keld::PolymerRecord& p = keld::polymerRecord[kind];
    if (c.below(2) == 0) continue;
    const double e = c.of({5e9, 2e10, 1e11}), across = e * c.of({0.3, 0.6, 1.0}),
                 nu = c.of({0.2, 0.35, 0.45});
    for (int i = 1; i <= 2; ++i) p.poisson.value[i] = nu;
    p.modulus.value = {e, across};
    p.shearModulus.value[1] = 0.4 * across;
    p.thermalExpansion.value = {c.of({1e-5, 5e-5}), 1e-4};
    if (!c.seldom()) continue;
    plain = false;
    setList(c, p.modulus, {1e-300, 1.0, 2e10, 1e300, -2e10, 0.0}, 1);
    setList(c, p.poisson, {-1.0, 0.0, 0.3, 0.5, 0.9, 3.0}, 1);
    setList(c, p.pvt, {0.0, 1.0, 500.0, 1e9, -1.0}, 1);
  }
  if (c.below(4) == 0) {
    r.fillerPresent = 1;
    r.fractionKind = 1 + c.below(2);
    (r.fractionKind == 1 ? r.fillerWeightFraction : r.fillerVolumeFraction) = 0.1 * c.below(11);
    keld::fillerValues = {-1.0, -1.0, -1.0, -1.0, -1.0};
    plain = false;  // large fractions leave no stiffness
  }
  return plain;
}

void setFields(choices& c) {
  keld::ResidualStressField& field = keld::residualStressField;
  if (c.below(2) == 0) keld::testing_support::setStress(1e7 * c.below(9), 1e7 * c.below(9));
  for (int e = 1; e <= field.stress1.rows(); ++e) {
    field.orientationValue[e] = c.of({0.34, 0.5, 0.8, 1.0});
    field.kindFraction[e] = c.of({0.0, 0.3, 0.8, 1.0});
    keld::elementTemperatureField.sideTemperature1[e] = 320.0 + c.below(100);
    if (c.seldom()) keld::elementTemperatureField.sideTemperature2[e] = c.of({1e-3, 200.0, 1e6});
  }
}

struct Answer {
  bool finished = false, converged = false;
  std::vector<keld::ResultRow> rows;
};

Answer solve(const TestMesh& mesh, int solverChoice) {
  Answer answer;
  keld::processRecord.solverChoice = solverChoice;
  int ierr = 0;
  try {
    keld::testing_support::runModelStages();
    keld::analysisDriver();
    keld::sinkMark();
  } catch (const keld::RunEnded&) {
    return answer;
  }
  if (solverChoice != 2) TIER_GET_NFLAG(&ierr);
  answer.finished = true;
  answer.converged = ierr == 0;
  for (int node = 1; node <= static_cast<int>(mesh.node.size()); ++node) {
    answer.rows.push_back(keld::resultRow(keld::ResultBlock::main, node));
    for (const double value : answer.rows.back()) require(std::isfinite(value), "finite rows");
  }
  keld::writeSummary(keld::resultExtremes());
  return answer;
}

void compare(const Answer& direct, const Answer& tier) {
  double size = 0.0, difference = 0.0;
  for (std::size_t i = 0; i < direct.rows.size(); ++i)
    for (std::size_t k = 0; k < 3; ++k) {
      size = std::max(size, std::abs(direct.rows[i][k]));
      difference = std::max(difference, std::abs(direct.rows[i][k] - tier.rows[i][k]));
    }
  require(difference <= 1e-3 * size, "both solvers give one answer");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (!std::freopen("/dev/null", "r", stdin) || !std::freopen("/dev/null", "w", stdout)) std::abort();
  keld::workingFiles = keld::composeWorkingFiles("/tmp/keld_fuzz_job", "/nonexistent/");
  keld::workingFiles.report = keld::workingFiles.log = "/dev/null";
  keld::fuzz::setTestLabels();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  bool plain = true;
  Answer answers[2];
  for (const int choice : {2, 1}) {  // the stages write into the tables: each solver begins anew
    choices c(data, size);
    TestMesh mesh;
    plain = makeMesh(c, mesh);
    keld::testing_support::loadModel(mesh);
    plain = setThickness(c) && plain;
    plain = setMaterial(c) && plain;
    setFields(c);
    keld::processRecord.cycleLimit = c.of({1000, 1000, 1000, 1, 30, 0, 10000});
    if (c.seldom())  // numbers that the input stage lets pass
      for (int& node : keld::processRecord.bcNode) node = c.below(static_cast<int>(mesh.node.size()) + 1);
    answers[choice - 1] = solve(mesh, choice);
  }
  if (plain && answers[0].finished && answers[1].finished && answers[0].converged)
    compare(answers[1], answers[0]);
  return 0;
}
