// One interpolation row under construction: slots of values by column, elimination, the corrections that keep
// the row sum, truncation. Used by pwint1_aa, pwint2_aa and pwiter, one object for each thread.
#pragma once

#include "tier/setup/couplings.h"
#include "tier/store/choices.h"

namespace tier {

struct interpolation_options {
  interpolation_kind kind = interpolation_kind::standard;  // first digit of nwt
  double etr = 0.2;                           // truncation limit relative to the largest weight, 0: none
  truncation limits = truncation::one_limit;  // first digit of ntr
  double ewt2 = 0.2;                          // extended: weak positive couplings above it are eliminated too
  int nprim = 0;                              // above 0: only rows of this kind are built
  bool unit_row_sum = false;                  // scale every row to row sum 1 (nint_rowsum1)
  // multipass
  int most_attempts = 3;               // numtry_max_set
  double largest_coarse_share = 0.75;  // up to it variables out of reach become C, else FF (gmax_multipass)
};

/// The slots of one row. Slot 1 is the diagonal; columns that are eliminated keep their slot with value 0.
class interpolation_row {
 public:
  enum class result { weights, no_weights };

  /// slot_of: scratch [1..n] of zeros, zero again after each row; columns, values and flags: scratch of
  /// `capacity` slots, [1..capacity].
  interpolation_row(const couplings& m, view<const int> icg, const interpolation_options& o,
                    view<int> slot_of, view<int> columns, view<double> values, view<int> flags, int capacity)
      : m_(m),
        icg_(icg),
        o_(o),
        slot_of_(slot_of),
        column_(columns),
        value_(values),
        interpolatory_(flags),
        capacity_(capacity) {}

  /// Row i of A in the slots; all C columns are interpolatory, or the strong ones alone. Returns how many
  /// are. -1: no room.
  int start(int i, bool all_c = false);

  /// Replaces strong F columns by their rows of A; extended:
  /// large positive weak couplings too. False: no room.
  bool eliminate_rows(bool extended);

  /// Replaces column j by its interpolation row. False: no room.
  bool eliminate_weights(int j, const weight_rows& old);

  /// Row i as it was; no further step is needed. False: no room.
  bool take(int i, const weight_rows& old);

  /// Columns behind the diagonal that A couples row i with: all of them, or the strong ones.
  template <class Visit>
  bool for_fine_neighbours(bool all, Visit visit) const {
    const int last = all ? m_.ia[i_ + 1] - 1 : m_.last_strong(i_);
    for (int p = m_.ia[i_] + 1; p <= last; ++p)
      if (icg_[m_.ja[p]] < 0 && couples(m_.ja[p]) && !visit(m_.ja[p])) return false;
    return true;
  }

  /// Turns the slots into weights, kept in slots 2..size(); clears slot_of. no_weights: nothing left or the
  /// diagonal is not positive.
  result finish(double etr, truncation limits);
  result finish() { return finish(o_.etr, o_.limits); }

  /// Clears slot_of of a row that is given up.
  void abandon();

  int row() const { return i_; }
  bool zero_row_sum() const { return zero_row_sum_; }  // the row could not be scaled to row sum 1
  bool has_slot(int j) const { return slot_of_[j] != 0; }
  double value_of(int j) const { return value_[slot_of_[j]]; }
  int size() const { return size_; }
  int column(int slot) const { return column_[slot]; }
  double weight(int slot) const { return value_[slot]; }

 private:
  /// Sums over slots of positive and negative values.
  struct sums {
    double positive = 0.0, negative = 0.0;  // the latter as a magnitude
    void add(double v) {
      if (v > 0.0) {
        positive += v;
      } else {
        negative -= v;
      }
    }
  };
  struct scales {
    double diagonal, positive, negative;
  };

  bool couples(int l) const { return icg_[l] != 0 && (!m_.kind || m_.kind[l] == m_.kind[i_]); }
  bool add(int column, double v, bool interpolatory);
  bool eliminate_row(int j);
  sums pack_interpolatory(sums& all);
  static scales correct(double diagonal, const sums& kept, const sums& all);
  void scale(const scales& s);
  void truncate(double etr, truncation limits);
  sums sum_slots() const;
  void scale_to_unit_row_sum();

  couplings m_;
  view<const int> icg_;
  interpolation_options o_;
  view<int> slot_of_;
  view<int> column_;
  view<double> value_;
  view<int> interpolatory_;
  int capacity_;
  int i_ = 0;
  int size_ = 0;
  bool zero_row_sum_ = false;
};

}  // namespace tier
