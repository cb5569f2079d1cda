// Shell model processing of a closed skin, from the pairing table to the scratch file, on one core.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "model/element_geometry.h"
#include "model/skin/shell_processing.h"
#include "model/skin/shell_tables.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"
#include "support/skin_maker.h"

namespace {

using namespace keld;

void writePairingTable(const BoxSkin& skin) {
  std::ofstream table(workingFiles.baseName);
  for (int e = 1; e <= elementTable.elementCount; ++e)
    table << e << ' ' << skin.partner[e] << ' ' << (skin.partner[e] ? skin.size[2] : 0.0) << '\n';
}

void shellModelProcessing(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / "keld_shell_bench";
  std::filesystem::create_directories(folder);
  workingFiles = composeWorkingFiles((folder / "job").string(), folder.string() + "/");
  const int along = static_cast<int>(std::sqrt(static_cast<double>(state.range(0)) / 4.0));
  for ([[maybe_unused]] auto step : state) {
    state.PauseTiming();
    BoxSkin skin({12.0, 8.0, 0.2}, {along, along, 2});
    skin.fillTables();
    writePairingTable(skin);
    elementGeometry();
    state.ResumeTiming();
    shellProcessing();
  }
  state.counters["triangles"] = elementTable.elementCount;
  state.counters["connectors"] = shell.runningCount - elementTable.elementCount;
  std::filesystem::remove_all(folder);
}
BENCHMARK(shellModelProcessing)->Arg(25000)->Arg(50000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
