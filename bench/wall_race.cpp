// Races the solvers of thin walls on the same systems; prints a Markdown table.
// Usage: wall_race SOLVERS SYSTEM... with SOLVERS of the letters
//   a  TIER by aggregation        m  MUMPS in double precision
//   c  TIER's classical set-up    s  MUMPS in single precision, refined to 1e-12
// and, where ML is installed, l, g, b: ML with Chebyshev, Gauss-Seidel, block Gauss-Seidel smoothing;
// SYSTEM kind:unknowns:edge_over_wall[:uneven][:slender=10][:random][:facets]. EPS in the environment is the
// tolerance (1e-8), PARAMETERS those of TIER. Each solver runs in a process of its own, in one thread unless
// OMP_NUM_THREADS says otherwise, so that its memory is its own.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

#include "model/solvers/solve_direct.h"
#include "tier.h"
#include "wall_systems.h"
#ifdef WALL_RACE_ML
#include "ml_call.h"
#endif

namespace {

using bench::wall_system;

struct outcome {
  double setup = 0.0, total = 0.0, elapsed = 0.0;  // s: processor time, and of the clock
  double megabytes = 0.0;                          // peak beyond what stood before
  double own_megabytes = 0.0;                      // of the library: hierarchy at the end
  double peak_megabytes = 0.0;                     // and at its peak
  double residual = 0.0, complexity = 0.0;
  double matrix_megabytes = 0.0;
  int unknowns = 0, steps = 0, levels = 0, ierr = 0;
};

double processor_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double clock_seconds() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

/// A line of /proc/self/status in MB.
double megabytes_of(const char* name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kilobytes = 0.0;
    if (word == name && status >> kilobytes) return kilobytes / 1000.0;
  }
  return 0.0;
}

double tolerance() {
  const char* const text = std::getenv("EPS");
  return text ? std::atof(text) : 1e-8;
}

/// PARAMETERS="nagg_degree=3,agg_theta=0.04" in the environment sets parameters of TIER by name.
void set_parameters() {
  const char* const text = std::getenv("PARAMETERS");
  std::istringstream in(text ? text : "");
  for (std::string word; std::getline(in, word, ',');) {
    const auto equals = static_cast<int>(std::min(word.find('='), word.size() - 1));
    const double value = std::atof(word.c_str() + equals + 1);
    const int whole = static_cast<int>(value);
    int type = 0;
    TIER_GETTYPE(word.c_str(), &equals, &type);
    if (type == 1) TIER_SETINTEGER(word.c_str(), &equals, &whole);
    if (type == 3) TIER_SETDBLE(word.c_str(), &equals, &value);
    if (type == 0) std::fprintf(stderr, "no parameter %s\n", word.c_str());
  }
}

void run_tier(wall_system& w, bool aggregation, outcome& out) {
  std::vector<double> u(w.s.f.size(), 0.0);
  const int nna = static_cast<int>(w.s.ja.size()), n = w.s.n, nsys = 3, modes = 6, iscale[3] = {0, 0, 0};
  const int quiet = -2, chosen = aggregation ? 1 : 0, counted = 2, off = -1, ifirst = 0;
  const int matrix = aggregation ? 12 : 21, nsolve = aggregation ? 30 : 20,
            ncyc = aggregation ? 1100200 : 1303000, iswtch = 4120;
  const double eps = tolerance(), chktol = -1.0;
  double res_in = 0.0, res_out = 0.0, a = 2.2, g = 1.7, p = 0.0, wa = 2.4;
  TIER_SET_MODE_MESS(&quiet);
  TIER_SET_NTYP_GALERKIN(&counted);
  TIER_SET_NAGGREGATION(&chosen);
  TIER_SET_NAGG_STRENGTH(&w.tuning.strength);
  TIER_SET_AGG_THETA(&w.tuning.limit);
  TIER_SET_NAGG_DEGREE(&w.tuning.smoothingDegree);
  set_parameters();
  const char* const report = std::getenv("REPORT");
  const int idump = report ? 10 : off, iout = report ? 20 : off;
  if (aggregation) TIER_MODES_SET(&n, &modes, w.modes.data(), &out.ierr);
  const double start = processor_seconds();
  TIER(&n, &nna, &nsys, w.s.ia.data(), w.s.ja.data(), w.s.a.data(), w.s.f.data(), u.data(), w.s.iu.data(), &n,
       aggregation ? w.block.data() : w.s.ip.data(), &n, &matrix, iscale, &res_in, &res_out, &out.steps,
       &out.ierr, &nsolve, &ifirst, &eps, &ncyc, &iswtch, &a, &g, &p, &wa, &chktol, &idump, &iout);
  double values[8], complexities[11];
  TIER_GET_TIME_AND_MEM(values);
  TIER_GET_COMPLEXITIES(&out.levels, complexities);
  out.total = processor_seconds() - start;
  out.setup = out.total * values[0] / values[3];  // TIER counts by the clock
  out.own_megabytes = values[7];
  out.peak_megabytes = values[6];
  out.complexity = complexities[0];
  out.residual = relative_residual(w.s, u);
}

void run_mumps(wall_system& w, keld::FactorPrecision precision, outcome& out) {
  keld::CompressedSystem system;
  const auto take = [](const auto& from, auto& to) {
    to.resize(static_cast<std::int64_t>(from.size()));
    std::copy(from.begin(), from.end(), to.begin());
  };
  take(w.s.ia, system.rowStart);
  take(w.s.ja, system.columnIndex);
  take(w.s.a, system.matrixValue);
  take(w.s.f, system.rowLoad);
  keld::Column<int> block;
  take(w.block, block);
  keld::Column<double> u(w.s.n);
  const double start = processor_seconds();
  keld::DirectSolver solver(system, block, 2000000000, "/tmp", precision);
  out.setup = processor_seconds() - start;
  out.residual = solver.solve(u);
  out.own_megabytes = out.peak_megabytes = solver.megabytesUsed();
  out.steps = solver.steps();
}

#ifdef WALL_RACE_ML
void run_ml(const wall_system& w, const char* smoother, outcome& out) {
  const bench::ml_outcome made = bench::call_ml(w, tolerance(), smoother);
  out.setup = made.setup;
  out.total = made.total;
  out.steps = made.steps;
  out.levels = made.levels;
  out.complexity = made.complexity;
  out.residual = relative_residual(w.s, made.u);
}
#endif

void run(wall_system& w, char solver, outcome& out) {
  if (solver == 'm') return run_mumps(w, keld::FactorPrecision::inDouble, out);
  if (solver == 's') return run_mumps(w, keld::FactorPrecision::inSingle, out);
#ifdef WALL_RACE_ML
  if (solver == 'l') return run_ml(w, "cheby", out);
  if (solver == 'g') return run_ml(w, "gs", out);
  if (solver == 'b') return run_ml(w, "block", out);
#endif
  run_tier(w, solver == 'a', out);
}

wall_system system_of(const std::string& text) {
  std::istringstream in(text);
  std::string unknowns, ratio, word;
  bench::wall_request request;
  std::getline(in, request.kind, ':');
  std::getline(in, unknowns, ':');
  std::getline(in, ratio, ':');
  request.unknowns = std::atoi(unknowns.c_str());
  request.edge_over_wall = std::atof(ratio.c_str());
  while (std::getline(in, word, ':')) {
    request.uneven |= word == "uneven";
    request.random_load |= word == "random";
    request.facets |= word == "facets";
    if (word.starts_with("slender=")) request.slender = std::atof(word.c_str() + 8);
  }
  return bench::make_walls(request);
}

/// In a process of its own, which makes the system too: threads that have run don't go along into a child.
outcome run_apart(const std::string& text, char solver) {
  int ends[2];
  outcome out;
  if (pipe(ends) != 0) return out;
  const pid_t child = fork();
  if (child == 0) {
    if (!std::getenv("REPORT") && std::freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
    wall_system w = system_of(text);
    out.unknowns = w.s.n;
    out.matrix_megabytes = 12e-6 * static_cast<double>(w.s.ja.size());
    const double before = megabytes_of("VmRSS:"), start = processor_seconds(), clock = clock_seconds();
    run(w, solver, out);
    if (out.total == 0.0) out.total = processor_seconds() - start;
    out.elapsed = clock_seconds() - clock;
    out.megabytes = megabytes_of("VmHWM:") - before;
    const bool sent = write(ends[1], &out, sizeof out) == sizeof out;
    std::fflush(stdout);
    _exit(sent ? 0 : 1);
  }
  close(ends[1]);
  if (read(ends[0], &out, sizeof out) != sizeof out) out.ierr = 999;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return out;
}

constexpr const char* known =
#ifdef WALL_RACE_ML
    "amsclgb";
#else
    "amsc";
#endif

const char* name_of(char solver) {
  switch (solver) {
    case 'a':
      return "aggregation";
    case 'm':
      return "MUMPS double";
    case 's':
      return "MUMPS single, refined";
    case 'l':
      return "ML, Chebyshev";
    case 'g':
      return "ML, Gauss-Seidel";
    case 'b':
      return "ML, block Gauss-Seidel";
    default:
      return "classical";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || std::string(argv[1]).find_first_not_of(known) != std::string::npos)
    return std::fprintf(stderr, "usage: wall_race SOLVERS KIND:UNKNOWNS:RATIO..., SOLVERS of %s\n", known), 2;
  std::printf(
      "| system | unknowns | solver | levels, complexity | steps | set-up s | total s | clock s | residual | "
      "MB beyond the system | own MB at the end, peak | matrix MB "
      "|\n|---|---|---|---|---|---|---|---|---|---|---|---|\n");
  for (int k = 2; k < argc; ++k)
    for (const char* solver = argv[1]; *solver != '\0'; ++solver) {
      std::fflush(stdout);
      const outcome o = run_apart(argv[k], *solver);
      const std::string fault = o.ierr == 0 ? "" : " ierr " + std::to_string(o.ierr);
      std::printf(
          "| %s | %d | %s%s | %d, %.2f | %d | %.2f | %.2f | %.2f | %.1e | %.0f | %.0f, %.0f | %.0f |\n",
          argv[k], o.unknowns, name_of(*solver), fault.c_str(), o.levels, o.complexity, o.steps, o.setup,
          o.total, o.elapsed, o.residual, o.megabytes, o.own_megabytes, o.peak_megabytes, o.matrix_megabytes);
      std::fflush(stdout);
    }
  return 0;
}
