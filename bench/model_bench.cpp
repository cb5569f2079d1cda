// Stages of the structural model on a ribbed plate, by number of triangles and threads. The counter
// "us/element" is the figure to watch: it must not grow with the size.
#include <benchmark/benchmark.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>

#include "input/mesh_tables.h"
#include "input/prior_fields.h"
#include "model/model_tables.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "model/walls/wedge/wedge_element.h"
#include "run/base/working_files.h"
#include "support/model_maker.h"

namespace keld {
namespace {

using testing_support::TestMesh;

/// A ribbed plate of about so many triangles; `shuffled` puts them in random order.
TestMesh plateOf(long triangles, bool shuffled = false) {
  const int cells = static_cast<int>(std::lround(std::sqrt(static_cast<double>(triangles) / 2.2)));
  TestMesh mesh = testing_support::ribbedMesh(cells, cells, 10);
  if (shuffled) std::shuffle(mesh.triangle.begin(), mesh.triangle.end(), std::mt19937(3));
  return mesh;
}

void load(const TestMesh& mesh) {
  workingFiles =
      composeWorkingFiles((std::filesystem::temp_directory_path() / "keld_model_bench").string(), "");
  testing_support::loadModel(mesh);
  testing_support::setStress(2e7, -1e7);
}

void useThreads([[maybe_unused]] long threads) {
#ifdef _OPENMP
  omp_set_num_threads(static_cast<int>(threads));
#endif
}

void prepare(const benchmark::State& state, bool shuffled = false) {
  useThreads(state.range(1));
  load(plateOf(state.range(0), shuffled));
  testing_support::runModelStages();
}

void countElements(benchmark::State& state) {
  const double elements = elementTable.partElementCount;
  state.counters["elements"] = elements;
  state.counters["time/element"] = benchmark::Counter(
      elements, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void formOneElement(benchmark::State& state) {
  load(plateOf(1000));
  testing_support::runModelStages();
  const auto axes = testing_support::skewRotation();
  ElementLoading loading;
  loading.stress = stressTensor(2e7, -1e7, axes[0], axes[1]);
  loading.unitThermal = loading.stress;
  loading.nodeTemperature = {400, 410, 420, 390, 380, 370};
  loading.ambientTemperature = 300.0;
  loading.thermal = true;
  ElementMatrix k;
  ElementLoad f;
  const std::array<Vector3, 3> corner = {{{0.1, 0.2, 0.3}, {1.4, 0.5, -0.2}, {0.6, 1.7, 0.9}}};
  while (state.KeepRunning()) {
    const Matrix6 d = rotatedStiffness(orientationAverage(materialConstants[1].stiffness, 0.7), axes);
    const WedgeGeometry geometry = wedgeGeometry(corner, 0.2, 1.0);
    formStiffness(geometry, d, k);
    formLoad(geometry, loading, f);
    benchmark::DoNotOptimize(k);
    benchmark::DoNotOptimize(f);
  }
}
BENCHMARK(formOneElement);

void modelStages(benchmark::State& state) {
  useThreads(state.range(1));
  const TestMesh mesh = plateOf(state.range(0));
  while (state.KeepRunning()) {
    state.PauseTiming();
    load(mesh);
    state.ResumeTiming();
    testing_support::runModelStages();
  }
  countElements(state);
}

void searchPattern(benchmark::State& state) {
  prepare(state);
  while (state.KeepRunning()) patternSearch();
  countElements(state);
}

void layOut(benchmark::State& state) {
  prepare(state);
  patternSearch();
  while (state.KeepRunning()) layOutRows();
  countElements(state);
}

void assembleMatrix(benchmark::State& state) {
  prepare(state);
  patternSearch();
  while (state.KeepRunning()) assemblePass(2, 2);
  countElements(state);
}

void assembleMatrixOfShuffledElements(benchmark::State& state) {
  prepare(state, true);
  patternSearch();
  while (state.KeepRunning()) assemblePass(2, 2);
  countElements(state);
}

void assembleLoadAlone(benchmark::State& state) {
  prepare(state);
  patternSearch();
  assemblePass(1, 2);
  while (state.KeepRunning()) assembleLoad(2, 2);
  countElements(state);
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->Unit(benchmark::kMillisecond)->UseRealTime()->ArgNames({"triangles", "threads"});
  for (long triangles : {10000, 40000, 160000, 640000}) {
    for (long threads : {1, 2}) bench->Args({triangles, threads});
  }
}
BENCHMARK(modelStages)->Apply(sizes);
BENCHMARK(searchPattern)->Apply(sizes);
BENCHMARK(layOut)->Apply(sizes);
BENCHMARK(assembleMatrix)->Apply(sizes);
BENCHMARK(assembleMatrixOfShuffledElements)->Apply(sizes);
BENCHMARK(assembleLoadAlone)->Apply(sizes);

}  // namespace
}  // namespace keld
