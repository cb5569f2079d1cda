// Makers of wall systems; see the header.
#include "wall_systems.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/model_tables.h"
#include "model/rigid_modes.h"
#include "model/solve_stages.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "model/walls/wall_model.h"
#include "run/base/working_files.h"
#include "support/model_maker.h"

namespace bench {

namespace {

using keld::testing_support::TestMesh;

constexpr double side = 10.0;  // cm

/// Bottom and two opposite walls of a box of half its height: the plate folded up along two lines.
void fold(TestMesh& mesh) {
  for (keld::Vector3& x : mesh.node) {
    const double a = 0.25 * side, b = 0.75 * side;
    if (x[0] < a) x = {a, x[1], a - x[0]};
    if (x[0] > b) x = {b, x[1], x[0] - b};
  }
}

void bend_to_dome(TestMesh& mesh) {
  for (keld::Vector3& x : mesh.node) {
    const double u = x[0] / side - 0.5, v = x[1] / side - 0.5;
    x[2] = 0.6 * side * (0.5 - u * u - v * v);
  }
}

/// The plate with five ribs along y, a fifth of its side high.
TestMesh plate_with_ribs(int cells_x, int cells_y) {
  constexpr int ribs = 5;
  TestMesh mesh = keld::testing_support::plateMesh(cells_x, cells_y, side, side);
  const int rows = std::max(1, cells_x / ribs);
  for (int rib = 0; rib < ribs; ++rib) {
    const int foot = std::max(1, (2 * rib + 1) * cells_x / (2 * ribs)) * (cells_y + 1) + 1;
    const auto first = static_cast<int>(mesh.node.size()) + 1;
    const double x = mesh.node[static_cast<std::size_t>(foot) - 1][0];
    for (int k = 1; k <= rows; ++k)
      for (int j = 0; j <= cells_y; ++j) mesh.node.push_back({x, side * j / cells_y, side * k / cells_x});
    const auto at = [&](int k, int j) { return k == 0 ? foot + j : first + (k - 1) * (cells_y + 1) + j; };
    for (int k = 0; k < rows; ++k)
      for (int j = 0; j < cells_y; ++j) {
        mesh.triangle.push_back({at(k, j), at(k + 1, j), at(k + 1, j + 1)});
        mesh.triangle.push_back({at(k, j), at(k + 1, j + 1), at(k, j + 1)});
      }
  }
  return mesh;
}

TestMesh mesh_of(const std::string& kind, int cells_x, int cells_y) {
  if (kind == "ribbed") return plate_with_ribs(cells_x, cells_y);
  TestMesh mesh = keld::testing_support::plateMesh(cells_x, cells_y, side, side, 0.1);
  if (kind == "dome") bend_to_dome(mesh);
  if (kind == "box") fold(mesh);
  return mesh;
}

void make_uneven() {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> part(0.5, 1.5);
  part(random);  // of an entry that there is no more: the walls stay those of the figures that are told
  for (double& h : keld::elementTable.thickness) h *= part(random);
}

template <class From, class To>
void copy(const From& from, long count, To& to) {
  to.assign(from.begin(), from.begin() + count);
}

void take_system(wall_system& w) {
  using namespace keld;
  const CompressedSystem& made = systemOfPass;
  linear_system& s = w.s;
  s.functions = 3;
  s.n = freedoms.freeDofCount;
  copy(made.rowStart, s.n + 1, s.ia);
  copy(made.columnIndex, s.ia.back() - 1, s.ja);
  copy(made.matrixValue, s.ia.back() - 1, s.a);
  copy(made.rowLoad, s.n, s.f);
  copy(made.rowFunction, s.n, s.iu);
  copy(made.rowPoint, s.n, s.ip);
  copy(rowBlocks(freedoms, wedgeNumbering.nodeMate), s.n, w.block);
  w.modes = rigidModes(wallModel());
  w.tuning = aggregationTuning(processRecord.wallModel == facet_walls, triangleShapes());
  systemOfPass = {};
}

}  // namespace

wall_system make_walls(const wall_request& request) {
  using namespace keld;
  workingFiles = composeWorkingFiles("/tmp/keld_wall_systems", "");
  const double share = request.kind == "ribbed" ? 0.5 : 1.0;  // of the nodes that stand in the base
  const double across = std::sqrt(share * request.unknowns / 6.0 / request.slender);
  const int cells = static_cast<int>(std::lround(across)) - 1;
  const int cells_along = static_cast<int>(std::lround(cells * request.slender));
  TestMesh mesh = mesh_of(request.kind, cells, cells_along);
  mesh.thickness = side / cells_along / request.edge_over_wall;
  testing_support::loadModel(mesh);
  if (request.facets) processRecord.wallModel = facet_walls;
  if (request.uneven) make_uneven();
  testing_support::setStress(2e7, -1e7);
  testing_support::runModelStages();
  patternSearch();
  assemblePass(1, 1);
  releasePattern();
  wall_system w;
  take_system(w);
  w.s.name = request.kind;
  if (request.random_load) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> load(-1.0, 1.0);
    for (double& f : w.s.f) f = load(random);
  }
  return w;
}

}  // namespace bench
