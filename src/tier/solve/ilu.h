// Incomplete LU factors of one level: ILU(0), ILUT and ILUTP, plain or modified.
// Used by the ILU smoothers, the one-level accelerators and the iterative coarsest-level solvers.
#pragma once

#include "tier/solve/vector_ops.h"
#include "tier/store/hierarchy.h"

namespace tier {

enum class ilu_kind { zero_fill, threshold, threshold_pivoting };

/// What a decomposition was made with; another wish means another decomposition.
struct ilu_options {
  ilu_kind kind = ilu_kind::zero_fill;
  bool modified = false;  // what is dropped goes to the diagonal ...
  double weight = 1.0;    // ... times this
  int lfil = 0;           // entries kept in each row of L and of U beside the diagonal
  double droptol = 0.0;   // relative to the row's 2-norm
  int speed = 1;          // kind of kernels; there is one
  bool operator==(const ilu_options&) const = default;
};

class ilu_factors {
 public:
  /// A Q ~ L U with unit diagonal of L; Q is the identity but for threshold_pivoting. ILUT: Saad, Numer.
  /// Linear Algebra Appl. 1 (1994) 387-402. False: a zero or non-finite pivot.
  bool decompose(const level& l, const ilu_options& options);

  /// z <- Q (L U)^-1 v. v and z may be the same. No allocation.
  void solve(const_vector v, vector z);

  const ilu_options& options() const { return options_; }
  std::int64_t entries() const { return lower_.top + upper_.top + n_; }

 private:
  /// Rows of one triangle, appended one after the other.
  struct triangle {
    work_array<int> start, column;
    work_array<double> value;
    std::int64_t top = 0;
    void allocate(int n, std::int64_t room);
    void append(int j, double x);
  };

  bool zero_fill(const level& l);
  bool threshold(const level& l);
  void load_row(const level& l, int i);
  void eliminate(int i, double tolerance);
  void put(int j, double x);
  bool store_row(int i, double tolerance);
  bool append_row(int i);
  void pivot_columns(int i);
  void keep_largest(work_array<int>& list, int& count, double tolerance, int most);

  int n_ = 0;
  ilu_options options_;
  triangle lower_, upper_;
  work_array<double> inverse_;     // 1 / diagonal of U
  work_array<double> row_;         // work row, by position in the pivot order
  work_array<int> in_row_;         // nonzero: position is in the work row
  work_array<int> below_, above_;  // positions of the work row left and right of the diagonal
  work_array<int> finished_;       // positions of finished multipliers
  int count_below_ = 0, count_above_ = 0;
  double dropped_ = 0.0;
  work_array<int> column_at_, position_of_;  // column order of threshold_pivoting
  work_array<double> x_;
};

}  // namespace tier
