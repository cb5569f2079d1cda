// Systems that the benchmarks of TIER's stages share: Poisson on a grid and KELD's own of a ribbed plate, as
// level 1 of a hierarchy.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "model/assembly.h"
#include "model/model_tables.h"
#include "model/pattern.h"
#include "run/working_files.h"
#include "support/model_maker.h"
#include "tier/frame/hierarchy.h"

namespace bench {

struct matrix {
  int n = 0, nsys = 1;
  std::vector<int> ia{1}, ja, iu;
  std::vector<double> a;
};

/// 2 * dimensions on the diagonal, -1 to each neighbour of a grid of m in each direction.
inline matrix poisson(int m, int dimensions) {
  matrix s;
  const int depth = dimensions == 3 ? m : 1;
  s.n = m * m * depth;
  for (int i = 0; i < s.n; ++i) {
    const int x = i % m, y = i / m % m, z = i / (m * m);
    const auto add = [&s](bool inside, int column, double v) {
      if (!inside) return;
      s.ja.push_back(column + 1);
      s.a.push_back(v);
    };
    add(true, i, 2.0 * dimensions);
    add(z > 0, i - m * m, -1.0);
    add(y > 0, i - m, -1.0);
    add(x > 0, i - 1, -1.0);
    add(x < m - 1, i + 1, -1.0);
    add(y < m - 1, i + m, -1.0);
    add(z < depth - 1, i + m * m, -1.0);
    s.ia.push_back(static_cast<int>(s.ja.size()) + 1);
  }
  return s;
}

inline matrix ribbed_plate(long triangles) {
  keld::workingFiles = keld::composeWorkingFiles("/tmp/keld_setup_bench", "");
  const int cells = static_cast<int>(std::lround(std::sqrt(static_cast<double>(triangles) / 2.2)));
  keld::testing_support::loadModel(keld::testing_support::ribbedMesh(cells, cells, 10));
  keld::testing_support::setStress(2e7, -1e7);
  keld::testing_support::runModelStages();
  keld::patternSearch();
  keld::assemblePass(1, 1);
  const keld::CompressedSystem& system = keld::systemOfPass;
  matrix s;
  s.n = keld::freedoms.freeDofCount;
  s.nsys = 3;
  s.ia.assign(system.rowStart.begin() + 1, system.rowStart.begin() + 2 + s.n);
  s.ja.assign(system.columnIndex.begin() + 1, system.columnIndex.begin() + s.ia.back());
  s.a.assign(system.matrixValue.begin() + 1, system.matrixValue.begin() + s.ia.back());
  s.iu.assign(system.rowFunction.begin() + 1, system.rowFunction.begin() + 1 + s.n);
  return s;
}

inline void set_first_level(tier::hierarchy& h, matrix& s) {
  for (tier::level& lv : h.at) lv = tier::level();
  h(1).n = s.n;
  h(1).ia = tier::view<int>(s.ia.data());
  h(1).ja = tier::view<int>(s.ja.data());
  h(1).a = tier::view<double>(s.a.data());
  if (s.nsys > 1) h(1).iu = tier::view<int>(s.iu.data());
}

}  // namespace bench
