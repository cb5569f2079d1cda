// TIER for C++ programs: a solver that owns its context, with spans in and faults out as exceptions. A header
// alone, over the entries of tier.h; link the library as for C. Solvers may work in different threads at
// once; one solver is for one thread at a time.
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tier.h"

namespace tier {

/// What ended a call: the number `ierr` of docs/solver.md, and its text.
class fault : public std::runtime_error {
 public:
  fault(int ierr, const std::string& text) : std::runtime_error("TIER: " + text), ierr_(ierr) {}
  int ierr() const { return ierr_; }

 private:
  int ierr_;
};

enum class accelerator { none = 0, conjugate_gradients = 1, bicgstab = 2, gmres = 3, flexible_cg = 4 };
enum class cycle { v = 1, f = 2, w = 3, vv = 4 };

struct options {
  bool symmetric = true;       // conjugate gradients need it, and a positive definite matrix
  bool zero_row_sums = false;  // one function: the solution is fixed only up to a constant
  double tolerance = 1e-8;     // of the residual's norm over that of the first guess
  int most_steps = 100;        // 1 to 9999
  cycle kind = cycle::v;
  accelerator method = accelerator::conjugate_gradients;
  int approach = 0;                    // code nsolve, 0: the default
  int strategy = 40;                   // n_default of iswtch
  std::vector<int> function_of_row{};  // 1 to the number of functions; empty: one function
  std::vector<int> point_of_row{};     // from 1; empty: no points given
};

struct outcome {
  int steps = 0;
  double first_residual = -1.0, last_residual = -1.0;
  int warning = 0;     // negative ierr of the call, 0: none
  std::string text{};  // of that warning
};

/// Sets up a hierarchy for a matrix and solves with it, as often as asked for.
class solver {
 public:
  explicit solver(options o = {}) : options_(std::move(o)) {
    int ierr = 0;
    TIER_CREATE(&context_, &ierr);
    if (ierr != 0) throw fault(ierr, "no memory for a context");
    const turned_to own(context_);
    const int silent = -3;
    TIER_SET_MODE_MESS(&silent);  // faults come as exceptions
    if (options_.method == accelerator::none) {
      const int no_accelerator = 0;
      TIER_SET_NCGRAD_DEFAULT(&no_accelerator);
    }
  }
  ~solver() {
    int ierr = 0;
    if (context_ != 0) TIER_DESTROY(&context_, &ierr);
  }
  solver(solver&& other) noexcept { swap(other); }
  solver& operator=(solver&& other) noexcept {
    swap(other);
    return *this;
  }
  solver(const solver&) = delete;
  solver& operator=(const solver&) = delete;

  /// A parameter of docs/parameters.md by name. Throws where none of that name takes such a value.
  void set(std::string_view name, double value) {
    const turned_to own(context_);
    const int length = static_cast<int>(name.size());
    int type = 0;
    TIER_GETTYPE(name.data(), &length, &type);
    const int whole = static_cast<int>(value), none = 0;
    require(type == 3 || ((type == 1 || type == 4) && whole == value),
            "no parameter \"" + std::string(name) + "\" that takes the value " + std::to_string(value));
    TIER_SETANY(name.data(), &length, &type, &whole, &value, &whole, "", &none);
  }

  /// Makes the hierarchy of an n x n matrix in compressed rows: ia n + 1 row starts, ja columns, a values,
  /// all counted from ia[0], 0 or 1. A row may hold its columns in any order and needs its diagonal. Copies.
  void setup(int n, std::span<const int> ia, std::span<const int> ja, std::span<const double> a) {
    ready_ = false;
    take_rows(n, ia, ja);
    take_values(a);
    set_up(run_keep);
    ready_ = true;
  }

  /// Other values in the pattern and order of the last set-up: the operators are formed anew over its levels.
  void update(std::span<const double> a) {
    require(ready_, "update needs a set-up");
    take_values(a);
    set_up(run_new_values);
  }

  /// u <- solution of A u = f, from u as first guess. Throws on errors; a warning stands in the outcome.
  outcome solve(std::span<const double> f, std::span<double> u) {
    require(ready_, "solve needs a set-up");
    require(f.size() == rows() && u.size() == rows(), "f and u need an element for each row");
    return call(run_reuse, options_.most_steps, f, u);
  }

  std::size_t rows() const { return ia_.empty() ? 0 : ia_.size() - 1; }

 private:
  static constexpr int run_keep = 4, run_new_values = 3, run_reuse = 1;

  /// The context of the calling thread while the object lives.
  class turned_to {
   public:
    explicit turned_to(int context) {
      int ierr = 0;
      TIER_GET_CONTEXT(&former_);
      TIER_USE(&context, &ierr);
    }
    ~turned_to() {
      int ierr = 0;
      TIER_USE(&former_, &ierr);
    }
    turned_to(const turned_to&) = delete;
    turned_to& operator=(const turned_to&) = delete;

   private:
    int former_ = 0;
  };

  static void require(bool holds, const std::string& text) {
    if (!holds) throw std::invalid_argument("TIER: " + text);
  }

  void swap(solver& other) noexcept {
    std::swap(context_, other.context_);
    std::swap(options_, other.options_);
    std::swap(ia_, other.ia_);
    std::swap(ja_, other.ja_);
    std::swap(source_, other.source_);
    std::swap(a_, other.a_);
    std::swap(ready_, other.ready_);
  }

  /// Row starts and columns from 1, the diagonal first in its row; source_ tells where each value comes from.
  void take_rows(int n, std::span<const int> ia, std::span<const int> ja) {
    require(n >= 1 && ia.size() == static_cast<std::size_t>(n) + 1, "ia needs n + 1 elements, n at least 1");
    const int base = ia[0];
    require(base == 0 || base == 1, "ia begins with 0 or 1");
    ia_.assign(1, 1);
    ja_.clear();
    source_.clear();
    ja_.reserve(ja.size());
    source_.reserve(ja.size());
    for (int i = 0; i < n; ++i) take_row(i, base, ia, ja);
  }

  void take_row(int i, int base, std::span<const int> ia, std::span<const int> ja) {
    const auto at = static_cast<std::size_t>(i);
    require(
        ia[at] <= ia[at + 1] && ia[at] >= base && static_cast<std::size_t>(ia[at + 1] - base) <= ja.size(),
        "row starts of row " + std::to_string(i) + " (from 0) out of order or range");
    const auto first = static_cast<std::size_t>(ia[at] - base),
               last = static_cast<std::size_t>(ia[at + 1] - base);
    std::size_t diagonal = last;
    for (std::size_t k = first; k < last && diagonal == last; ++k)
      if (ja[k] - base == i) diagonal = k;
    require(diagonal != last, "row " + std::to_string(i) + " (from 0) has no diagonal");
    append(diagonal, i);
    for (std::size_t k = first; k < last; ++k)
      if (k != diagonal) append(k, ja[k] - base);
    ia_.push_back(static_cast<int>(ja_.size()) + 1);
  }

  void append(std::size_t from, int column) {
    ja_.push_back(column + 1);
    source_.push_back(from);
  }

  void take_values(std::span<const double> a) {
    require(a.size() >= source_.size(), "a needs a value for each column");
    a_.resize(source_.size());
    for (std::size_t k = 0; k < source_.size(); ++k) a_[k] = a[source_[k]];
  }

  void set_up(int run) {
    std::vector<double> zero(rows(), 0.0);
    call(run, 0, zero, zero);
  }

  outcome call(int run, int steps, std::span<const double> f, std::span<double> u) {
    const turned_to own(context_);
    const int nnu = static_cast<int>(rows()), nna = static_cast<int>(ja_.size()), one = 1,
              guess_as_it_stands = 0;
    int nsys = 1;
    for (const int function : options_.function_of_row) nsys = function > nsys ? function : nsys;
    const int matrix = (options_.symmetric ? 10 : 20) + (options_.zero_row_sums ? 1 : 2);
    const std::vector<int> scale(static_cast<std::size_t>(nsys), options_.zero_row_sums ? 1 : 0);
    const std::vector<int>&iu = options_.function_of_row, &ip = options_.point_of_row;
    const int ndiu = iu.empty() ? 1 : static_cast<int>(iu.size()),
              ndip = ip.empty() ? 1 : static_cast<int>(ip.size());
    const int ncyc =
        1000000 * static_cast<int>(options_.kind) + 100000 * static_cast<int>(options_.method) + steps;
    const int iswtch = 1000 * run + 100 + options_.strategy, silent = -1;
    const double chktol = run == run_reuse ? -1.0 : 0.0;
    double estimate[4] = {0.0, 0.0, 0.0, 0.0};
    outcome o;
    int ierr = 0;
    TIER(&nnu, &nna, &nsys, ia_.data(), ja_.data(), a_.data(), f.data(), u.data(),
         iu.empty() ? &one : iu.data(), &ndiu, ip.empty() ? &one : ip.data(), &ndip, &matrix, scale.data(),
         &o.first_residual, &o.last_residual, &o.steps, &ierr, &options_.approach, &guess_as_it_stands,
         &options_.tolerance, &ncyc, &iswtch, &estimate[0], &estimate[1], &estimate[2], &estimate[3], &chktol,
         &silent, &silent);
    if (ierr > 0) ready_ = false;
    if (ierr > 0) throw fault(ierr, last_text());
    o.warning = ierr;
    if (ierr < 0) o.text = last_text();
    return o;
  }

  static std::string last_text() {
    std::string text(400, ' ');
    const int length = static_cast<int>(text.size());
    TIER_GET_FAULT(text.data(), &length);
    return text.substr(0, text.find_last_not_of(' ') + 1);
  }

  int context_ = 0;
  options options_;
  std::vector<int> ia_, ja_;
  std::vector<std::size_t> source_;
  std::vector<double> a_;
  bool ready_ = false;
};

}  // namespace tier
