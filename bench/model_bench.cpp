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
#include "input/process_record.h"
#include "model/model_tables.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "model/walls/wall_model.h"
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

void load(const TestMesh& mesh, int wallModel = wedge_walls) {
  workingFiles =
      composeWorkingFiles((std::filesystem::temp_directory_path() / "keld_model_bench").string(), "");
  testing_support::loadModel(mesh);
  testing_support::setStress(2e7, -1e7);
  processRecord.wallModel = wallModel;
}

void useThreads([[maybe_unused]] long threads) {
#ifdef _OPENMP
  omp_set_num_threads(static_cast<int>(threads));
#endif
}

void prepare(const benchmark::State& state, int wallModel = wedge_walls, bool shuffled = false) {
  useThreads(state.range(1));
  load(plateOf(state.range(0), shuffled), wallModel);
  testing_support::runModelStages();
}

void countElements(benchmark::State& state) {
  const double elements = elementTable.partElementCount;
  state.counters["elements"] = elements;
  state.counters["time/element"] = benchmark::Counter(
      elements, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Material, stiffness and load of one element, without its place in the system.
void formOneElement(benchmark::State& state) {
  load(plateOf(1000), static_cast<int>(state.range(0)));
  testing_support::runModelStages();
  WallElement element = wallElement(1, true);
  element.axes = testing_support::skewRotation();
  ElementMatrix k;
  ElementLoad f;
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(element);
    wallModel().form(element, &k, f);
    benchmark::DoNotOptimize(k);
    benchmark::DoNotOptimize(f);
  }
}
BENCHMARK(formOneElement)->ArgName("walls")->Arg(wedge_walls)->Arg(facet_walls);

void modelStages(benchmark::State& state, int wallModel) {
  useThreads(state.range(1));
  const TestMesh mesh = plateOf(state.range(0));
  while (state.KeepRunning()) {
    state.PauseTiming();
    load(mesh, wallModel);
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

void assembleMatrix(benchmark::State& state, int wallModel, bool shuffled) {
  prepare(state, wallModel, shuffled);
  patternSearch();
  while (state.KeepRunning()) assemblePass(2, 2);
  countElements(state);
}

void assembleLoadAlone(benchmark::State& state, int wallModel) {
  prepare(state, wallModel);
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
BENCHMARK_CAPTURE(modelStages, wedges, wedge_walls)->Apply(sizes);
BENCHMARK_CAPTURE(modelStages, facets, facet_walls)->Apply(sizes);
BENCHMARK(searchPattern)->Apply(sizes);
BENCHMARK(layOut)->Apply(sizes);
BENCHMARK_CAPTURE(assembleMatrix, wedges, wedge_walls, false)->Apply(sizes);
BENCHMARK_CAPTURE(assembleMatrix, facets, facet_walls, false)->Apply(sizes);
BENCHMARK_CAPTURE(assembleMatrix, wedges_in_random_order, wedge_walls, true)->Apply(sizes);
BENCHMARK_CAPTURE(assembleMatrix, facets_in_random_order, facet_walls, true)->Apply(sizes);
BENCHMARK_CAPTURE(assembleLoadAlone, wedges, wedge_walls)->Apply(sizes);
BENCHMARK_CAPTURE(assembleLoadAlone, facets, facet_walls)->Apply(sizes);

}  // namespace
}  // namespace keld
