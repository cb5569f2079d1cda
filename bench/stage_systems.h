// Systems that the benchmarks of TIER's stages share: Poisson on a grid and KELD's own of a ribbed plate, as
// level 1 of a hierarchy.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "model/model_tables.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "run/base/working_files.h"
#include "scalar_systems.h"
#include "support/model_maker.h"
#include "tier/store/hierarchy.h"

namespace bench {

/// Poisson's equation on a grid of m in each direction.
inline linear_system poisson(int m, int dimensions) {
  return dimensions == 2 ? poisson_5_point(m) : poisson_7_point(m);
}

inline linear_system ribbed_plate(long triangles) {
  keld::workingFiles = keld::composeWorkingFiles("/tmp/keld_setup_bench", "");
  const int cells = static_cast<int>(std::lround(std::sqrt(static_cast<double>(triangles) / 2.2)));
  keld::testing_support::loadModel(keld::testing_support::ribbedMesh(cells, cells, 10));
  keld::testing_support::setStress(2e7, -1e7);
  keld::testing_support::runModelStages();
  keld::patternSearch();
  keld::assemblePass(1, 1);
  const keld::CompressedSystem& system = keld::systemOfPass;
  linear_system s;
  s.n = keld::freedoms.freeDofCount;
  s.functions = 3;
  s.ia.assign(system.rowStart.begin(), system.rowStart.begin() + s.n + 1);
  s.ja.assign(system.columnIndex.begin(), system.columnIndex.end());
  s.a.assign(system.matrixValue.begin(), system.matrixValue.end());
  s.iu.assign(system.rowFunction.begin(), system.rowFunction.end());
  return s;
}

inline void set_first_level(tier::hierarchy& h, linear_system& s) {
  for (tier::level& lv : h.at) lv = tier::level();
  h(1).n = s.n;
  h(1).ia = tier::view<int>(s.ia.data());
  h(1).ja = tier::view<int>(s.ja.data());
  h(1).a = tier::view<double>(s.a.data());
  if (s.functions > 1) h(1).iu = tier::view<int>(s.iu.data());
}

}  // namespace bench
