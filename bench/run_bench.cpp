// run_bench: a whole run of keld on a ribbed plate, stage by stage, against MUMPS alone on the same system.
// Called by a person; prints rows of the table in docs/performance.md.
//   run_bench INSTALL/ [TRIANGLES...]     threads by OMP_NUM_THREADS
// Each size is run in a process of its own, so that peaks of memory are its own.
#include <dmumps_c.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "input/input_stage.h"
#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/model_tables.h"
#include "model/solve_stages.h"
#include "model/solvers/solve_direct.h"
#include "model/system/assembly.h"
#include "model/system/pattern.h"
#include "part_maker.h"
#include "results/results_stage.h"
#include "run/base/failure.h"
#include "run/base/platform.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace {

using namespace keld;

double now() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

/// Seconds of an action.
template <class Action>
double timed(const Action& action) {
  const double start = now();
  action();
  return now() - start;
}

/// A line of /proc/self/status in bytes: "VmRSS:" at present, "VmHWM:" at the most so far.
double memoryOf(const char* name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kilobytes = 0.0;
    if (word == name && status >> kilobytes) return kilobytes * 1024.0;
  }
  return 0.0;
}

struct Measured {
  long triangles = 0, unknowns = 0;
  double input = 0, model = 0, pattern = 0, assembly = 0, solver = 0, secondPass = 0, results = 0;  // s
  double bytesBeside = 0;  // peak beside the library's own
  double mumpsAlone = 0;   // s
  double sum() const { return input + model + pattern + assembly + solver + secondPass + results; }
};

void startRun(const std::string& base, const std::string& install) {
  workingFiles = composeWorkingFiles(base, install);
  vOpenMessageFile(OpenMode::empty);
  vCloseMessageFile();
  vOpenLogMessageFile(OpenMode::empty);
  vCloseLogMessageFile();
}

void finishPass(Column<double>& displacement) {
  scatterToFreedoms(freedoms, solution.rowSolution, displacement);
  turnToGlobalAxes(freedoms, restraintFrames, displacement);
}

/// The steps of a run with two passes.
void measureRun(const std::string& base, const std::string& install, Measured& m) {
  const double atStart = memoryOf("VmRSS:");
  startRun(base, install);
  m.input = timed(inputStage);
  m.model = timed(modelStage);
  m.triangles = elementTable.partElementCount;
  m.unknowns = freedoms.freeDofCount;
  m.pattern = timed(patternSearch);
  m.assembly = timed([] {
    assemblePass(1, 2);
    releasePattern();
  });
  const double beforeSolver = memoryOf("VmHWM:");
  double librarysOwn = 0.0;
  {
    std::unique_ptr<DirectSolver> solver;
    solution.rowSolution.assign(freedoms.freeDofCount, 0.0);
    m.solver = timed([&] {
      solver = std::make_unique<DirectSolver>(systemOfPass, rowBlocks(freedoms, wedgeNumbering.nodeMate),
                                              inCoreLimit(availableMemory()), scratchFolder(base));
      solver->solve(solution.rowSolution);
      finishPass(solution.displacementInMold);
    });
    m.secondPass = timed([&] {
      assembleLoad(2, 2);
      solver->solve(solution.rowSolution);
      finishPass(solution.displacementTotal);
    });
    librarysOwn = 1e6 * solver->megabytesUsed();
  }
  systemOfPass = {};
  m.results = timed(writeResults);
  m.bytesBeside = std::max(beforeSolver, memoryOf("VmHWM:") - librarysOwn) - atStart;
}

/// One factorisation and two solutions of the same system by the library alone, its arrays made beforehand,
/// with the settings of the direct path.
void measureLibrary(const std::string& base, const std::string& install, Measured& m) {
  startRun(base, install);
  inputStage();
  modelStage();
  patternSearch();
  assemblePass(1, 2);
  std::vector<int> row, column, start{1}, unknown;
  std::vector<double> value, load(systemOfPass.rowLoad.begin(), systemOfPass.rowLoad.end());
  for (int i = 1; i <= freedoms.freeDofCount; ++i) {
    for (int p = systemOfPass.rowStart[i]; p < systemOfPass.rowStart[i + 1]; ++p) {
      if (systemOfPass.columnIndex[p] < i) continue;
      row.push_back(i);
      column.push_back(systemOfPass.columnIndex[p]);
      value.push_back(systemOfPass.matrixValue[p]);
    }
  }
  const Column<int> block = rowBlocks(freedoms, wedgeNumbering.nodeMate);
  Column<std::vector<int>> members(wedgeNumbering.wedgeNodeCount);
  for (int i = 1; i <= freedoms.freeDofCount; ++i) members[block[i]].push_back(i);
  for (const auto& list : members) {
    if (list.empty()) continue;
    unknown.insert(unknown.end(), list.begin(), list.end());
    start.push_back(static_cast<int>(unknown.size()) + 1);
  }

  DMUMPS_STRUC_C mumps{};
  const auto job = [&mumps](int number) {
    mumps.job = number;
    dmumps_c(&mumps);
    if (mumps.infog[0] != 0) std::exit(3);
  };
  mumps.sym = mumps.par = 1;
  mumps.comm_fortran = -987654;
  job(-1);
  for (int stream = 0; stream < 3; ++stream) mumps.icntl[stream] = -1;
  mumps.icntl[3] = 0;
  mumps.icntl[6] = 4;
  mumps.icntl[14] = 1;
  mumps.n = freedoms.freeDofCount;
  mumps.nnz = static_cast<MUMPS_INT8>(value.size());
  mumps.irn = row.data();
  mumps.jcn = column.data();
  mumps.a = value.data();
  mumps.nblk = static_cast<MUMPS_INT>(start.size()) - 1;
  mumps.blkptr = start.data();
  mumps.blkvar = unknown.data();
  mumps.rhs = load.data();
  m.mumpsAlone = timed([&] {
    for (int step : {1, 2, 3, 3}) job(step);
  });
  job(-2);
}

/// Runs an action in a process of its own, its console closed, and brings back what it measured.
template <class Action>
bool inOwnProcess(Measured& measured, const Action& action) {
  int ends[2];
  if (::pipe(ends) != 0) return false;
  std::fflush(stdout);  // or the child writes it once more
  const pid_t child = ::fork();
  if (child == 0) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::_Exit(2);
    try {
      action(measured);
    } catch (const RunEnded&) {
      std::_Exit(1);
    }
    const bool sent = ::write(ends[1], &measured, sizeof measured) == sizeof measured;
    std::_Exit(sent ? 0 : 2);
  }
  ::close(ends[1]);
  const bool whole = ::read(ends[0], &measured, sizeof measured) == sizeof measured;
  ::close(ends[0]);
  ::waitpid(child, nullptr, 0);
  return whole;
}

bool printRow(int triangles, int wallModel, const std::string& install) {
  const std::string base = (std::filesystem::temp_directory_path() / "keld_run_bench").string();
  part_maker::PartOptions part{.shape = part_maker::Shape::ribbed, .triangles = triangles};
  part_maker::JobOptions job{
      .fields = part_maker::Fields::flow, .polymer = part_maker::Polymer::pa66_gf30, .wallModel = wallModel};
  part_maker::writeJob(base, part_maker::makeMesh(part), job);
  Measured m;
  if (!inOwnProcess(m, [&](Measured& out) { measureRun(base, install, out); })) return false;
  if (!inOwnProcess(m, [&](Measured& out) { measureLibrary(base, install, out); })) return false;
  std::printf(
      "| %s | %ld | %ld | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f |\n",
      wallModel == facet_walls ? "facet" : "wedge", m.triangles, m.unknowns, m.input, m.model, m.pattern,
      m.assembly, m.solver, m.secondPass, m.results, m.sum(), m.mumpsAlone, m.sum() / m.mumpsAlone,
      m.bytesBeside / 1e3 / static_cast<double>(m.triangles));
  std::fflush(stdout);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("run_bench INSTALL/ [TRIANGLES...]\n", stderr);
    return 1;
  }
  std::vector<int> sizes;
  for (int i = 2; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  if (sizes.empty()) sizes = {10000, 40000, 160000, 640000};
  std::puts(
      "| walls | triangles | unknowns | input | model | pattern | assembly | factor, pass 1 | pass 2 | "
      "results | "
      "whole | "
      "MUMPS alone | ratio | kB/triangle |\n|---|---|---|---|---|---|---|---|---|---|---|---|---|---|");
  for (int triangles : sizes) {
    for (int wallModel : {wedge_walls, facet_walls}) {
      if (printRow(triangles, wallModel, argv[1])) continue;
      std::fprintf(stderr, "run_bench: the run of %d triangles has failed\n", triangles);
      return 1;
    }
  }
  return 0;
}
