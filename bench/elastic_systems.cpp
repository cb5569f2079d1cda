// Element stiffness by Gauss points and its assembly node by node; a part's system by the analysis's stages.
#include "elastic_systems.h"

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <random>

#include "input/input_stage.h"
#include "model/model_stage.h"
#include "model/model_tables.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"
#include "tier/store/numbered.h"

namespace bench {

namespace {

constexpr double poissons_ratio = 0.3;

/// n entries, by numbers from 0 that are signed as dimensions, corners and directions are.
template <class T, int n>
using entries = tier::numbered<T, static_cast<std::size_t>(n)>;
template <int n, int m = n>
using block = entries<entries<double, m>, n>;

/// Stress by strain, normal components first; plane stress for two dimensions.
template <int d>
block<6> stress_of_strain() {
  constexpr double nu = poissons_ratio, shear = 0.5 / (1.0 + nu);
  const double normal = d == 2 ? 1.0 / (1.0 - nu * nu) : (1.0 - nu) / ((1.0 + nu) * (1.0 - 2.0 * nu));
  const double across = d == 2 ? nu * normal : nu * normal / (1.0 - nu);
  block<6> c{};
  for (int i = 0; i < d; ++i)
    for (int j = 0; j < d; ++j) c[i][j] = i == j ? normal : across;
  for (int i = d; i < 3 * (d - 1); ++i) c[i][i] = shear;
  return c;
}

/// Corner n of the unit element: one bit for each direction.
constexpr int side(int corner, int direction) { return corner >> direction & 1; }

/// Stiffness of the unit square or cube, 2 Gauss points in each direction.
template <int d>
class element_stiffness {
 public:
  static constexpr int corners = 1 << d, strains = 3 * (d - 1);

  element_stiffness() {
    const auto c = stress_of_strain<d>();
    for (int g = 0; g < corners; ++g) {
      const auto b = strain_rows(g);
      for (int i = 0; i < corners * d; ++i)
        for (int j = 0; j < corners * d; ++j)
          for (int p = 0; p < strains; ++p)
            for (int q = 0; q < strains; ++q) k_[i][j] += b[p][i] * c[p][q] * b[q][j] / corners;
    }
  }
  double operator()(int corner, int u, int other, int v) const { return k_[corner * d + u][other * d + v]; }

 private:
  using rows = block<6, corners * d>;

  static rows strain_rows(int gauss_point) {
    const auto place = [gauss_point](int direction) {
      return 0.5 + (side(gauss_point, direction) ? 0.5 : -0.5) / std::sqrt(3.0);
    };
    rows b{};
    for (int n = 0; n < corners; ++n)
      for (int x = 0; x < d; ++x) {
        double slope = side(n, x) ? 1.0 : -1.0;
        for (int y = 0; y < d; ++y)
          if (y != x) slope *= side(n, y) ? place(y) : 1.0 - place(y);
        b[x][n * d + x] = slope;
        for (int y = 0; y < d; ++y)  // shear of the plane x, y
          if (y != x) b[d == 2 ? 2 : 2 + x + y][n * d + y] = slope;
      }
    return b;
  }

  block<corners * d> k_{};
};

/// Nodes 1..m in x (that of 0 is clamped), 0..m in the other directions.
template <int d>
struct grid {
  int m;
  using place = entries<int, d>;

  int nodes() const { return static_cast<int>(std::lround(m * std::pow(m + 1, d - 1))); }
  place of(int node) const {
    place p{};
    p[0] = node % m + 1;
    node /= m;
    for (int x = 1; x < d; ++x, node /= m + 1) p[x] = node % (m + 1);
    return p;
  }
  int node(const place& p) const {
    int index = 0;
    for (int x = d - 1; x >= 1; --x) index = index * (m + 1) + p[x];
    return index * m + p[0] - 1;
  }
};

/// Blocks between a node and its 3^d neighbours, by their offsets, each -1 to 1.
template <int d>
struct node_row {
  static constexpr int neighbours = d == 2 ? 9 : 27;
  entries<bool, neighbours> present{};
  entries<block<d>, neighbours> coupling{};

  node_row(const grid<d>& g, const element_stiffness<d>& k, const typename grid<d>::place& at) {
    for (int own = 0; own < (1 << d); ++own) {  // the element in which the node is corner `own`
      bool inside = true;
      for (int x = 0; x < d; ++x) {
        const int low = at[x] - side(own, x);
        inside = inside && low >= 0 && low < g.m;
      }
      if (!inside) continue;
      for (int other = 0; other < (1 << d); ++other) {
        int index = 0;
        for (int x = d - 1; x >= 0; --x) index = 3 * index + side(other, x) - side(own, x) + 1;
        present[index] = at[0] + side(other, 0) - side(own, 0) > 0;
        for (int u = 0; u < d; ++u)
          for (int v = 0; v < d; ++v) coupling[index][u][v] += k(own, u, other, v);
      }
    }
  }
};

template <int d>
linear_system elastic(std::string name, int m) {
  const element_stiffness<d> k;
  const grid<d> g{m};
  linear_system s;
  s.name = std::move(name);
  s.functions = d;
  s.n = g.nodes() * d;
  std::mt19937 random(1);
  std::uniform_real_distribution<double> load(-1.0, 1.0);
  constexpr int self = node_row<d>::neighbours / 2;
  for (int node = 0; node < g.nodes(); ++node) {
    const auto at = g.of(node);
    const node_row<d> row(g, k, at);
    for (int u = 0; u < d; ++u) {
      s.ja.push_back(node * d + u + 1);
      s.a.push_back(row.coupling[self][u][u]);
      for (int o = 0; o < node_row<d>::neighbours; ++o) {
        if (!row.present[o]) continue;
        auto neighbour = at;
        for (int x = 0, rest = o; x < d; ++x, rest /= 3) neighbour[x] += rest % 3 - 1;
        for (int v = 0; v < d; ++v) {
          if ((o == self && u == v) || row.coupling[o][u][v] == 0.0) continue;
          s.ja.push_back(g.node(neighbour) * d + v + 1);
          s.a.push_back(row.coupling[o][u][v]);
        }
      }
      s.ia.push_back(static_cast<int>(s.ja.size()) + 1);
      s.iu.push_back(u + 1);
      s.ip.push_back(node + 1);
      s.f.push_back(load(random));
    }
  }
  return s;
}

}  // namespace

linear_system plane_stress(int m) { return elastic<2>("plane stress", m); }
linear_system elastic_cube(int m) { return elastic<3>("elastic cube", m); }

linear_system part_system(const part_maker::PartOptions& part, const std::string& install) {
  using namespace keld;
  const std::string base = (std::filesystem::temp_directory_path() / "keld_part_system").string();
  part_maker::JobOptions job{.fields = part_maker::Fields::flow, .polymer = part_maker::Polymer::pa66_gf30};
  part_maker::writeJob(base, part_maker::makeMesh(part), job);
  workingFiles = composeWorkingFiles(base, install);
  vOpenMessageFile(OpenMode::empty);
  vCloseMessageFile();
  vOpenLogMessageFile(OpenMode::empty);
  vCloseLogMessageFile();
  inputStage();
  modelStage();
  patternSearch();
  assemblePass(1, 1);
  releasePattern();
  linear_system s;
  s.functions = 3;
  s.n = freedoms.freeDofCount;
  const auto copy = [](const auto& from, long count, auto& to) {
    to.assign(from.begin(), from.begin() + count);
  };
  const CompressedSystem& made = systemOfPass;
  copy(made.rowStart, s.n + 1, s.ia);
  copy(made.columnIndex, s.ia.back() - 1, s.ja);
  copy(made.matrixValue, s.ia.back() - 1, s.a);
  copy(made.rowLoad, s.n, s.f);
  copy(made.rowFunction, s.n, s.iu);
  copy(made.rowPoint, s.n, s.ip);
  systemOfPass = {};
  return s;
}

}  // namespace bench
