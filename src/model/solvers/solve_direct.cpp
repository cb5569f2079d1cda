// The direct path: define structure, reorder, memory limit, factor, solve, delete.
// Called by the analysis driver where solverChoice is 2.
#include "model/solvers/solve_direct.h"

#include <dmumps_c.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "run/base/failure.h"
#include "run/base/streams.h"

namespace keld {

namespace {

// Control values of MUMPS by the numbers of its manual: ICNTL(i) is icntl[i - 1].
constexpr int error_stream = 0, diagnostic_stream = 1, global_stream = 2, print_level = 3;
constexpr int ordering = 6, blocked_analysis = 14, out_of_core = 21;
constexpr int ordering_minimum_degree = 0, ordering_pord = 4;
constexpr int job_start = -1, job_end = -2, job_analyse = 1, job_factor = 2, job_solve = 3;
constexpr int use_comm_world = -987654;
// INFOG(i) is infog[i - 1].
constexpr int status = 0, status_detail = 1, negative_pivots = 11, memory_in_core = 15, memory_used = 21,
              memory_out_of_core = 25;

const char* meaningOf(int code) {
  switch (code) {
    case -5:
    case -7:
    case -13:
      return "memory can't be had";
    case -8:
    case -9:
    case -19:
      return "the work space is too small";
    case -6:
    case -10:
      return "the matrix is singular";
    case -90:
      return "the factor can't be written to disk or read back";
    default:
      return "see the manual of MUMPS for the code";
  }
}

}  // namespace

struct DirectSolver::Instance : DMUMPS_STRUC_C {};

int inCoreLimit(std::uint64_t availableBytes) {
  return static_cast<int>(
      std::min(0.9 * static_cast<double>(availableBytes) / 1e6, static_cast<double>(INT_MAX)));
}

std::string scratchFolder(const std::string& baseName) {
  if (const char* chosen = std::getenv("MUMPS_OOC_TMPDIR"); chosen != nullptr && *chosen != '\0')
    return chosen;
  const std::string folder = std::filesystem::path(baseName).parent_path().string();
  return folder.empty() ? "." : folder;
}

DirectSolver::DirectSolver(CompressedSystem& system, std::span<const int> rowBlock, int memoryLimit,
                           const std::string& folder)
    : system_(system),
      n_(static_cast<int>(system.rowStart.size()) - 2),
      instance_(std::make_unique<Instance>()) {
  instance_->sym = 1;  // positive definite
  instance_->par = 1;
  instance_->comm_fortran = use_comm_world;
  instance_->job = job_start;
  dmumps_c(instance_.get());
  try {
    keepUpperTriangle();
    defineStructure(rowBlock);
    reorder();
    limitMemory(memoryLimit, folder);
    factor();
    checkRegular();
  } catch (...) {  // a constructor that throws has no destructor
    instance_->job = job_end;
    dmumps_c(instance_.get());
    throw;
  }
}

DirectSolver::~DirectSolver() {
  instance_->job = job_end;  // deletes the files of a factor on disk, too
  dmumps_c(instance_.get());
}

/// Closes the rows up over their upper triangle. On the way each row's lower entries are held against the
/// entries that the rows above have for them, sum against sum: the library sees one triangle alone.
void DirectSolver::keepUpperTriangle() {
  std::vector<int>& rowStart = system_.rowStart;
  std::vector<int>& column = system_.columnIndex;
  std::vector<double>& value = system_.matrixValue;
  const auto size = static_cast<std::size_t>(n_) + 1;
  std::vector<double> difference(size, 0.0), magnitude(size, 0.0);  // upper minus lower, by column
  const int entries = rowStart[size] - 1;
  rowIndex_.reserve(static_cast<std::size_t>(entries / 2 + n_));
  int kept = 1;
  for (int row = 1; row <= n_; ++row) {
    const int first = rowStart[row], end = rowStart[row + 1];
    rowStart[row] = kept;
    for (int p = first; p < end; ++p) {
      const int c = column[p];
      const double a = value[p];
      if (c < row) {
        difference[row] -= a;
        magnitude[row] += std::abs(a);
        continue;
      }
      if (c > row) {
        difference[c] += a;
        magnitude[c] += std::abs(a);
      }
      rowIndex_.push_back(row);
      column[kept] = c;
      value[kept++] = a;
    }
    if (std::abs(difference[row]) > 1e-8 * magnitude[row]) {
      vFail(
          "\n !! Error !!  The stiffness matrix isn't symmetric in row %d, which the direct solver needs: "
          "check thickness and moduli of the elements there.\n",
          row);
    }
  }
  rowStart[size] = kept;
  column.resize(static_cast<std::size_t>(kept));
  value.resize(static_cast<std::size_t>(kept));
  column.shrink_to_fit();
  value.shrink_to_fit();
}

/// Hands over rows, columns and values in place (their numbers count from 1 as the library's do) and the
/// rows sorted by block.
void DirectSolver::defineStructure(std::span<const int> rowBlock) {
  instance_->n = n_;
  instance_->nnz = static_cast<MUMPS_INT8>(rowIndex_.size());
  instance_->irn = rowIndex_.data();
  instance_->jcn = system_.columnIndex.data() + 1;
  instance_->a = system_.matrixValue.data() + 1;

  const int blocks = *std::max_element(rowBlock.begin() + 1, rowBlock.end());
  std::vector<int> next(static_cast<std::size_t>(blocks) + 1, 0);  // size of a block, then its next place
  for (int row = 1; row <= n_; ++row) ++next[rowBlock[row]];
  int place = 1;
  for (int block = 1; block <= blocks; ++block) {
    const int size = next[block];
    next[block] = place;
    if (size > 0) blockStart_.push_back(place);
    place += size;
  }
  blockStart_.push_back(place);
  blockUnknown_.resize(static_cast<std::size_t>(n_));
  for (int row = 1; row <= n_; ++row) blockUnknown_[next[rowBlock[row]]++ - 1] = row;
  instance_->nblk = static_cast<MUMPS_INT>(blockStart_.size()) - 1;
  instance_->blkptr = blockStart_.data();
  instance_->blkvar = blockUnknown_.data();
}

void DirectSolver::reorder() {
  instance_->icntl[error_stream] = instance_->icntl[diagnostic_stream] = instance_->icntl[global_stream] = -1;
  instance_->icntl[print_level] = 0;
  // PORD ends the process when all unknowns are coupled with each other; any order is right then.
  const bool fullyCoupled = 2 * instance_->nnz == static_cast<MUMPS_INT8>(n_) * (n_ + 1);
  instance_->icntl[ordering] = fullyCoupled ? ordering_minimum_degree : ordering_pord;
  instance_->icntl[blocked_analysis] = 1;
  runJob(job_analyse, "reorder");
}

void DirectSolver::limitMemory(int memoryLimit, const std::string& folder) {
  const int need = instance_->infog[memory_in_core], needOnDisk = instance_->infog[memory_out_of_core];
  if (need <= memoryLimit) return;
  if (needOnDisk > memoryLimit) {
    vFail(
        "\n !! Error !!  The direct solver needs %d MB, with its factor on disk still %d MB, and %d MB are "
        "available: take the multigrid solver (value 2 of the .CPU file other than 2) or a coarser mesh.\n",
        need, needOnDisk, memoryLimit);
  }
  if (folder.size() >= sizeof instance_->ooc_tmpdir) {
    vFail(
        "\n !! Error !!  The path of the folder for the factor on disk is longer than %d bytes: '%s'. Name a "
        "shorter one in MUMPS_OOC_TMPDIR.\n",
        static_cast<int>(sizeof instance_->ooc_tmpdir) - 1, folder.c_str());
  }
  instance_->ooc_tmpdir[folder.copy(instance_->ooc_tmpdir, folder.size())] = '\0';
  instance_->icntl[out_of_core] = 1;
  outOfCore_ = true;
  vPrintMessage(100, "   The factor needs %d MB, above the limit of %d MB: it goes to disk in '%s'\n", need,
                memoryLimit, folder.c_str());
}

void DirectSolver::factor() {
  runJob(job_factor, "factor");
  if (instance_->infog[negative_pivots] > 0) {
    vFail(
        "\n !! Error !!  The stiffness matrix isn't positive definite: %d negative pivots (direct solver). "
        "Check thickness and moduli, and that all triangles hang together.\n",
        instance_->infog[negative_pivots]);
  }
  rowIndex_ = {};
  blockStart_ = {};
  blockUnknown_ = {};
}

/// A part in two pieces, or with a piece on a hinge, has a singular matrix whose loads are balanced all the
/// same, so that the residual of any position of the loose piece is small. Hence a load that isn't balanced:
/// in the unknowns scaled to a unit diagonal its answer exceeds it by at most the condition of the matrix.
void DirectSolver::checkRegular() {
  std::vector<double> probe(static_cast<std::size_t>(n_) + 1), scale(probe.size());
  double loadSquare = 0.0, answerSquare = 0.0;
  for (int row = 1; row <= n_; ++row) {
    const double load = 1.0 + 0.25 * (row % 7);  // out of step with the three directions
    scale[row] = std::sqrt(system_.matrixValue[system_.rowStart[row]]);
    probe[row] = scale[row] * load;
    loadSquare += load * load;
  }
  solveInPlace(probe);
  for (int row = 1; row <= n_; ++row) answerSquare += probe[row] * probe[row] * scale[row] * scale[row];
  const double growth = std::sqrt(answerSquare / loadSquare);
  if (!(growth < growthLimit)) {
    vFail(
        "\n !! Error !!  The stiffness matrix is singular: the part isn't held "
        "in place (a load grows by %.1e in the direct solver, the limit is %.0e). "
        "Do all triangles hang together, by more than a corner or a hinge?\n",
        growth, growthLimit);
  }
}

void DirectSolver::solveInPlace(std::span<double> unknowns) {
  instance_->nrhs = 1;
  instance_->lrhs = n_;
  instance_->rhs = unknowns.data() + 1;
  runJob(job_solve, "solve");
}

double DirectSolver::solve(std::span<double> unknowns) {
  std::copy_n(system_.rowLoad.begin() + 1, n_, unknowns.begin() + 1);
  solveInPlace(unknowns);
  const double residual = relativeResidual(unknowns);
  if (!(residual <= residualLimit)) {
    vFail("\n !! Error !!  The direct solution is wrong: its relative residual is %.3e, the limit is %.0e.\n",
          residual, residualLimit);
  }
  return residual;
}

int DirectSolver::megabytesUsed() const { return instance_->infog[memory_used]; }

double DirectSolver::relativeResidual(std::span<const double> unknowns) const {
  std::vector<double> residual(system_.rowLoad.begin(), system_.rowLoad.begin() + n_ + 1);
  double loadSquare = 0.0, residualSquare = 0.0;
  for (int row = 1; row <= n_; ++row) {
    double sum = 0.0;
    for (int p = system_.rowStart[row]; p < system_.rowStart[row + 1]; ++p) {
      const int c = system_.columnIndex[p];
      sum += system_.matrixValue[p] * unknowns[c];
      if (c != row) residual[c] -= system_.matrixValue[p] * unknowns[row];
    }
    residual[row] -= sum;  // rows above have given their share, and none below will
    residualSquare += residual[row] * residual[row];
    loadSquare += system_.rowLoad[row] * system_.rowLoad[row];
  }
  if (loadSquare == 0.0) return residualSquare == 0.0 ? 0.0 : INFINITY;
  return std::sqrt(residualSquare / loadSquare);
}

void DirectSolver::runJob(int job, const char* step) {
  instance_->job = job;
  dmumps_c(instance_.get());
  const int code = instance_->infog[status];
  if (code != 0) {  // warnings too: each of them means a matrix that isn't the one meant
    vFail("\n !! Error !!  The direct solver has failed in its step '%s': %s (INFOG(1)= %d, INFOG(2)= %d).\n",
          step, meaningOf(code), code, instance_->infog[status_detail]);
  }
}

}  // namespace keld
