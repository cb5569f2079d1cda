// Control values, jobs and failures of MUMPS, for both precisions; see the header.
#include "model/solvers/mumps_factor.h"

#include <dmumps_c.h>
#include <smumps_c.h>

#include <algorithm>
#include <type_traits>

#include "model/solvers/upper_triangle.h"

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

void run(DMUMPS_STRUC_C& record) { dmumps_c(&record); }
void run(SMUMPS_STRUC_C& record) { smumps_c(&record); }

}  // namespace

template <class Real>
struct MumpsFactor<Real>::Instance
    : std::conditional_t<std::is_same_v<Real, double>, DMUMPS_STRUC_C, SMUMPS_STRUC_C> {};

const char* MumpsFault::meaning() const {
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

template <class Real>
MumpsFactor<Real>::MumpsFactor(const CompressedSystem& triangle, const Column<int>& rowBlock)
    : instance_(std::make_unique<Instance>()) {
  instance_->sym = 1;  // positive definite
  instance_->par = 1;
  instance_->comm_fortran = use_comm_world;
  instance_->job = job_start;
  run(*instance_);
  try {
    defineStructure(triangle, rowBlock);
    analyse();
  } catch (...) {  // a constructor that throws has no destructor
    instance_->job = job_end;
    run(*instance_);
    throw;
  }
}

template <class Real>
MumpsFactor<Real>::~MumpsFactor() {
  instance_->job = job_end;  // deletes the files of a factor on disk, too
  run(*instance_);
}

/// Hands over rows and columns in place (their numbers count from 1 as the library's do) and the rows sorted
/// by block.
template <class Real>
void MumpsFactor<Real>::defineStructure(const CompressedSystem& triangle, const Column<int>& rowBlock) {
  const int n = rowsOf(triangle);
  rowIndex_ = rowsOfEntries(triangle);
  instance_->n = n;
  instance_->nnz = rowIndex_.rows();
  instance_->irn = rowIndex_.begin();
  instance_->jcn = const_cast<int*>(triangle.columnIndex.begin());  // the library only reads it

  const int blocks = *std::max_element(rowBlock.begin(), rowBlock.end());
  Column<int> next(blocks, 0);  // size of a block, then its next place
  for (int row = 1; row <= n; ++row) ++next[rowBlock[row]];
  int place = 1;
  for (int block = 1; block <= blocks; ++block) {
    const int size = next[block];
    next[block] = place;
    if (size > 0) blockStart_.push_back(place);
    place += size;
  }
  blockStart_.push_back(place);
  blockUnknown_.resize(n);
  for (int row = 1; row <= n; ++row) blockUnknown_[next[rowBlock[row]]++] = row;
  instance_->nblk = blockStart_.rows() - 1;
  instance_->blkptr = blockStart_.begin();
  instance_->blkvar = blockUnknown_.begin();
}

template <class Real>
void MumpsFactor<Real>::analyse() {
  instance_->icntl[error_stream] = instance_->icntl[diagnostic_stream] = instance_->icntl[global_stream] = -1;
  instance_->icntl[print_level] = 0;
  // PORD ends the process when all unknowns are coupled with each other; any order is right then.
  const auto n = static_cast<MUMPS_INT8>(instance_->n);
  const bool fullyCoupled = 2 * instance_->nnz == n * (n + 1);
  instance_->icntl[ordering] = fullyCoupled ? ordering_minimum_degree : ordering_pord;
  instance_->icntl[blocked_analysis] = 1;
  runJob(job_analyse, "reorder");
}

template <class Real>
int MumpsFactor<Real>::megabytesInMemory() const {
  return instance_->infog[memory_in_core];
}

template <class Real>
int MumpsFactor<Real>::megabytesOnDisk() const {
  return instance_->infog[memory_out_of_core];
}

template <class Real>
int MumpsFactor<Real>::longestFolder() {
  return static_cast<int>(sizeof Instance::ooc_tmpdir) - 1;
}

template <class Real>
void MumpsFactor<Real>::putOnDisk(const std::string& folder) {
  instance_->ooc_tmpdir[folder.copy(instance_->ooc_tmpdir, sizeof instance_->ooc_tmpdir - 1)] = '\0';
  instance_->icntl[out_of_core] = 1;
}

template <class Real>
int MumpsFactor<Real>::factor(std::span<Real> value) {
  instance_->a = value.data();
  runJob(job_factor, "factor");
  rowIndex_ = {};
  blockStart_ = {};
  blockUnknown_ = {};
  return instance_->infog[negative_pivots];
}

template <class Real>
void MumpsFactor<Real>::solve(std::span<Real> unknowns) {
  instance_->nrhs = static_cast<MUMPS_INT>(unknowns.size()) / instance_->n;
  instance_->lrhs = instance_->n;
  instance_->rhs = unknowns.data();
  runJob(job_solve, "solve");
}

template <class Real>
int MumpsFactor<Real>::megabytesUsed() const {
  return instance_->infog[memory_used];
}

template <class Real>
void MumpsFactor<Real>::runJob(int job, const char* step) {
  instance_->job = job;
  run(*instance_);
  const int code = instance_->infog[status];
  // Warnings too: each of them means a matrix that isn't the one meant.
  if (code != 0) throw MumpsFault{step, code, instance_->infog[status_detail]};
}

template class MumpsFactor<double>;
template class MumpsFactor<float>;

}  // namespace keld
