// Races TIER against BoomerAMG of hypre on the same scalar systems in the same run, one thread each.
// Usage: hypre_race [unknowns] [repetitions]; prints a Markdown table. Built where libhypre-dev is installed.
#define OMPI_SKIP_MPICXX 1  // the C interface alone
#include <HYPRE.h>
#include <HYPRE_IJ_mv.h>
#include <HYPRE_krylov.h>
#include <HYPRE_parcsr_ls.h>
#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <numeric>

#include "tier_call.h"

namespace {

using bench::linear_system;

struct outcome {
  double seconds = 0.0;  // set-up and solution
  int steps = 0;
  double residual = 0.0;
};

/// Processor seconds, as everything here runs in one thread.
double now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// V-cycles under GMRES with one F step on the way down, which these systems need no more than, and F, C and
/// F on the way up, which saves a step of GMRES.
outcome run_tier(const linear_system& system) {
  constexpr bench::tier_settings settings{.nrd = 11, .nru = 1131};
  const bench::tier_outcome t = call_tier(system, settings);
  return {t.processor_seconds, t.steps, t.residual};
}

/// The system as a hypre matrix and two vectors.
struct hypre_system {
  HYPRE_IJMatrix matrix = nullptr;
  HYPRE_IJVector right = nullptr, left = nullptr;
  HYPRE_ParCSRMatrix a = nullptr;
  HYPRE_ParVector f = nullptr, u = nullptr;

  explicit hypre_system(const linear_system& s) {
    HYPRE_IJMatrixCreate(MPI_COMM_WORLD, 0, s.n - 1, 0, s.n - 1, &matrix);
    HYPRE_IJMatrixSetObjectType(matrix, HYPRE_PARCSR);
    std::vector<int> length(static_cast<std::size_t>(s.n)), rows(length), columns(s.ja);
    for (std::size_t i = 0; i < length.size(); ++i) length[i] = s.ia[i + 1] - s.ia[i];
    std::iota(rows.begin(), rows.end(), 0);
    for (int& c : columns) --c;
    HYPRE_IJMatrixSetRowSizes(matrix, length.data());
    HYPRE_IJMatrixInitialize(matrix);
    HYPRE_IJMatrixSetValues(matrix, s.n, length.data(), rows.data(), columns.data(), s.a.data());
    HYPRE_IJMatrixAssemble(matrix);
    HYPRE_IJMatrixGetObject(matrix, reinterpret_cast<void**>(&a));
    const std::vector<double> zero(s.f.size(), 0.0);
    make_vector(right, f, rows, s.f);
    make_vector(left, u, rows, zero);
  }
  hypre_system(const hypre_system&) = delete;
  hypre_system& operator=(const hypre_system&) = delete;
  ~hypre_system() {
    HYPRE_IJMatrixDestroy(matrix);
    HYPRE_IJVectorDestroy(right);
    HYPRE_IJVectorDestroy(left);
  }

  static void make_vector(HYPRE_IJVector& vector, HYPRE_ParVector& object, const std::vector<int>& rows,
                          const std::vector<double>& values) {
    const int n = static_cast<int>(values.size());
    HYPRE_IJVectorCreate(MPI_COMM_WORLD, 0, n - 1, &vector);
    HYPRE_IJVectorSetObjectType(vector, HYPRE_PARCSR);
    HYPRE_IJVectorInitialize(vector);
    HYPRE_IJVectorSetValues(vector, n, rows.data(), values.data());
    HYPRE_IJVectorAssemble(vector);
    HYPRE_IJVectorGetObject(vector, reinterpret_cast<void**>(&object));
  }
};

/// BoomerAMG as preconditioner of conjugate gradients.
outcome run_hypre(const linear_system& s, bool classical) {
  hypre_system system(s);
  HYPRE_Solver cg, amg;
  const double start = now();
  HYPRE_BoomerAMGCreate(&amg);
  HYPRE_BoomerAMGSetPrintLevel(amg, 0);
  HYPRE_BoomerAMGSetTol(amg, 0.0);
  HYPRE_BoomerAMGSetMaxIter(amg, 1);
  if (classical) {
    HYPRE_BoomerAMGSetCoarsenType(amg, 3);  // Ruge-Stueben
    HYPRE_BoomerAMGSetInterpType(amg, 0);   // classical
    HYPRE_BoomerAMGSetPMaxElmts(amg, 0);
    HYPRE_BoomerAMGSetCycleRelaxType(amg, 3, 1);  // Gauss-Seidel down, its reverse up, Gauss below
    HYPRE_BoomerAMGSetCycleRelaxType(amg, 4, 2);
    HYPRE_BoomerAMGSetCycleRelaxType(amg, 9, 3);
  }
  HYPRE_ParCSRPCGCreate(MPI_COMM_WORLD, &cg);
  HYPRE_PCGSetTol(cg, 1e-8);
  HYPRE_PCGSetMaxIter(cg, 500);
  HYPRE_PCGSetTwoNorm(cg, 1);
  HYPRE_PCGSetPrecond(cg, reinterpret_cast<HYPRE_PtrToSolverFcn>(HYPRE_BoomerAMGSolve),
                      reinterpret_cast<HYPRE_PtrToSolverFcn>(HYPRE_BoomerAMGSetup), amg);
  HYPRE_ParCSRPCGSetup(cg, system.a, system.f, system.u);
  HYPRE_ParCSRPCGSolve(cg, system.a, system.f, system.u);
  const double seconds = now() - start;

  int steps = 0;
  HYPRE_PCGGetNumIterations(cg, &steps);
  std::vector<double> u(s.f.size());
  std::vector<int> rows(s.f.size());
  std::iota(rows.begin(), rows.end(), 0);
  HYPRE_IJVectorGetValues(system.left, s.n, rows.data(), u.data());
  HYPRE_ParCSRPCGDestroy(cg);
  HYPRE_BoomerAMGDestroy(amg);
  return {seconds, steps, relative_residual(s, u)};
}

/// Interleaved runs; the one with the median time of each.
outcome median(std::vector<outcome>& runs) {
  std::sort(runs.begin(), runs.end(),
            [](const outcome& x, const outcome& y) { return x.seconds < y.seconds; });
  return runs[runs.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  HYPRE_Init();
  const int unknowns = argc > 1 ? std::atoi(argv[1]) : 250000,
            repetitions = argc > 2 ? std::atoi(argv[2]) : 3;
  const int m2 = static_cast<int>(std::lround(std::sqrt(unknowns)));
  const int m3 = static_cast<int>(std::lround(std::cbrt(unknowns)));
  const std::function<linear_system()> makers[] = {
      [&] { return bench::poisson_5_point(m2); },
      [&] { return bench::poisson_9_point(m2); },
      [&] { return bench::poisson_7_point(m3); },
      [&] { return bench::anisotropic(m2, 0.001); },
      [&] { return bench::turned_anisotropic(m2, 0.01, 0.7853981633974483); },
      [&] { return bench::jumping_coefficients(m2, 1e6); }};

  std::printf(
      "| system | unknowns | TIER s (steps, residual) | BoomerAMG classical "
      "| BoomerAMG defaults | ratio to the better |\n|---|---|---|---|---|---|\n");
  double product = 1.0;
  int count = 0;
  for (const auto& make : makers) {
    const linear_system s = make();
    std::vector<outcome> tier, classical, defaults;
    for (int r = 0; r < repetitions; ++r) {
      tier.push_back(run_tier(s));
      classical.push_back(run_hypre(s, true));
      defaults.push_back(run_hypre(s, false));
    }
    const outcome t = median(tier), c = median(classical), d = median(defaults);
    const double ratio = t.seconds / std::min(c.seconds, d.seconds);
    product *= ratio;
    ++count;
    std::printf("| %s | %d | %.3f (%d, %.1e) | %.3f (%d, %.1e) | %.3f (%d, %.1e) | %.2f |\n", s.name.c_str(),
                s.n, t.seconds, t.steps, t.residual, c.seconds, c.steps, c.residual, d.seconds, d.steps,
                d.residual, ratio);
    std::fflush(stdout);
  }
  std::printf("\nGeometric mean of the ratios: %.2f\n", std::pow(product, 1.0 / count));
  HYPRE_Finalize();
  MPI_Finalize();
  return 0;
}
