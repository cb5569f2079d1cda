// Smoothed aggregation of Trilinos ML through its C interface.
#include "ml_call.h"

#include <ml_include.h>
#include <ml_mat_formats.h>
#include <mpi.h>

#include <algorithm>
#include <ctime>
#include <limits>

#include "tier/store/numbered.h"

namespace bench {

namespace {

/// The system with blocks of one size, as ML takes it: rows by block, rows that a block lacks with a diagonal
/// alone and no load.
struct blocked_system {
  int size = 0, n = 0;
  std::vector<int> place;  // of each row of the wall system, from 0
  std::vector<int> start, column;
  std::vector<double> value, load, modes;

  explicit blocked_system(const wall_system& w) {
    lay_out(w);
    fill(w);
    const auto rows = static_cast<std::size_t>(n), count = w.modes.size() / w.s.f.size();
    load.assign(rows, 0.0);
    modes.assign(rows * count, 0.0);
    for (std::size_t i = 0; i < place.size(); ++i) {
      const auto at = static_cast<std::size_t>(place[i]);
      load[at] = w.s.f[i];
      for (std::size_t m = 0; m < count; ++m) modes[m * rows + at] = w.modes[m * place.size() + i];
    }
  }

 private:
  void lay_out(const wall_system& w) {
    const int last = *std::max_element(w.block.begin(), w.block.end());
    tier::numbered_list<int> filled(last + 1), number(last + 1);
    for (const int b : w.block) size = std::max(size, ++filled[b]);
    for (int b = 1; b <= last; ++b) {
      number[b] = n;
      if (filled[b] > 0) n += size;
      filled[b] = 0;
    }
    for (const int b : w.block) place.push_back(number[b] + filled[b]++);
  }

  void fill(const wall_system& w) {
    constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    tier::numbered_list<std::size_t> row_at(n, none);
    for (std::size_t i = 0; i < place.size(); ++i) row_at[place[i]] = i;
    double mean = 0.0;
    for (std::size_t i = 0; i < place.size(); ++i) mean += w.s.a[position(w.s.ia[i])] / w.s.n;
    start.push_back(0);
    for (int i = 0; i < n; ++i) {
      const std::size_t row = row_at[i];
      if (row == none) {
        column.push_back(i);
        value.push_back(mean);
      } else {
        for (std::size_t k = position(w.s.ia[row]); k < position(w.s.ia[row + 1]); ++k) {
          column.push_back(place[position(w.s.ja[k])]);
          value.push_back(w.s.a[k]);
        }
      }
      start.push_back(static_cast<int>(column.size()));
    }
  }
};

void add_smoother(ML* ml, int level, const std::string& kind, int block) {
  if (kind == "cheby")
    ML_Gen_Smoother_Cheby(ml, level, ML_BOTH, 20.0, 2);
  else if (kind == "block")
    ML_Gen_Smoother_SymBlockGaussSeidel(ml, level, ML_BOTH, 1, 1.0, block);
  else
    ML_Gen_Smoother_SymGaussSeidel(ml, level, ML_BOTH, 1, 1.0);
}

double seconds_since(std::clock_t begin) {
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

struct counted_cycle {
  ML* ml;
  int count = 0;
};

int precondition(void* data, int n, double* z, int, double* r) {
  auto* const cycle = static_cast<counted_cycle*>(data);
  ++cycle->count;
  return ML_MGVSolve_Wrapper(cycle->ml, n, z, n, r);
}

int conjugate_gradients(ML* ml, blocked_system& s, double eps, std::vector<double>& u) {
  counted_cycle cycle{ml};
  ML_Krylov* const krylov = ML_Krylov_Create(ml->comm);
  ML_Krylov_Set_Method(krylov, ML_CG);
  ML_Krylov_Set_Amatrix(krylov, &ml->Amat[0]);
  ML_Krylov_Set_PreconFunc(krylov, precondition);
  ML_Krylov_Set_Precon(krylov, &cycle);
  ML_Krylov_Set_Tolerance(krylov, eps);
  ML_Krylov_Set_MaxIterations(krylov, 1000);
  ML_Krylov_Set_PrintFreq(krylov, 100000);
  ML_Krylov_Solve(krylov, s.n, s.load.data(), u.data());
  return cycle.count;
}

/// Levels and operator complexity; smoothers, and a direct solution of the last level.
void make_hierarchy(ML* ml, blocked_system& s, const std::string& smoother, ml_outcome& out) {
  constexpr int most_levels = 10, coarse_rows = 360, six = 6;
  ML_Aggregate* aggregate = nullptr;
  ML_Aggregate_Create(&aggregate);
  ML_Aggregate_Set_CoarsenScheme_Uncoupled(aggregate);
  ML_Aggregate_Set_MaxCoarseSize(aggregate, coarse_rows);
  ML_Aggregate_Set_MaxLevels(aggregate, most_levels);
  ML_Aggregate_Set_DampingFactor(aggregate, 4.0 / 3.0);
  ML_Aggregate_Set_NullSpace(aggregate, s.size, six, s.modes.data(), s.n);
  ML_Set_SpectralNormScheme_Calc(ml);
  out.levels = ML_Gen_MGHierarchy_UsingAggregation(ml, 0, ML_INCREASING, aggregate);
  double all = 0.0;
  for (int level = 0; level < out.levels; ++level) {
    all += static_cast<double>(ml->Amat[level].N_nonzeros);
    if (level + 1 < out.levels) add_smoother(ml, level, smoother, level == 0 ? s.size : six);
  }
  out.complexity = all / static_cast<double>(s.column.size());
  ML_Gen_Smoother_Amesos(ml, out.levels - 1, ML_AMESOS_KLU, -1, 0.0, 1);
  ML_Gen_Solver(ml, ML_MGV, 0, out.levels - 1);
  ML_Aggregate_Destroy(&aggregate);
}

}  // namespace

ml_outcome call_ml(const wall_system& w, double eps, const std::string& smoother) {
  int started = 0;
  MPI_Initialized(&started);
  if (started == 0) MPI_Init(nullptr, nullptr);
  ml_outcome out;
  blocked_system s(w);
  ML_CSR_MSRdata matrix{s.column.data(), s.start.data(), s.value.data(), 0, 0, 0};
  const std::clock_t begin = std::clock();
  ML_Set_PrintLevel(0);
  ML* ml = nullptr;
  ML_Create(&ml, 10);
  ML_Init_Amatrix(ml, 0, s.n, s.n, &matrix);
  ML_Set_Amatrix_Matvec(ml, 0, CSR_matvec);
  ML_Set_Amatrix_Getrow(ml, 0, CSR_getrow, nullptr, s.n);
  ml->Amat[0].N_nonzeros = static_cast<int>(s.column.size());
  make_hierarchy(ml, s, smoother, out);
  out.setup = seconds_since(begin);

  std::vector<double> u(static_cast<std::size_t>(s.n), 0.0);
  out.steps = conjugate_gradients(ml, s, eps, u);
  out.total = seconds_since(begin);
  for (const int at : s.place) out.u.push_back(u[static_cast<std::size_t>(at)]);
  ML_Destroy(&ml);
  return out;
}

}  // namespace bench
