// Builds the interpolation rows of a level in threads: each writes the rows of its range into a part of its
// own, the parts are joined in thread order. Used by pwint1_aa, pwint2_aa and pwiter.
#pragma once

#include <memory>

#include "tier/setup/interpolation_row.h"
#include "tier/setup/pcol.h"
#include "tier/store/hierarchy.h"
#include "tier/store/numbered.h"
#include "tier/store/row_loop.h"

namespace tier {

/// The couplings of a level's matrix within an unknown, or all of them.
couplings couplings_of(const level& lv, bool own_unknown);

/// The interpolation that a level has, taken out of it so that a new one can be built from it.
struct detached_weights {
  work_array<int> iw, jw;
  work_array<double> w;
  explicit detached_weights(level& lv) {
    iw.swap(lv.iw);
    jw.swap(lv.jw);
    w.swap(lv.w);
  }
  weight_rows rows() const { return {iw, jw, w}; }
};

class weight_assembly {
 public:
  /// What the computation of a fine row can end with.
  enum class outcome { weights, empty, becomes_c, no_room };

  /// by_points: the variables of a point become C together.
  weight_assembly(level& lv, const couplings& m, const interpolation_options& o, bool by_points);

  /// Fills iw, jw and w of the level, jw with its own variables: identity rows for C, compute(row, i) for F.
  /// Returns how many variables have become C; in a serial run later rows see each change at once, in threads
  /// the changes wait until all rows are done.
  template <class Compute>
  int run(Compute compute) {
    for (bool finished = false; !finished;) {
      for_chunks(team(), team(), [&](const row_chunk& range) {
        for (int p = range.lo; p <= range.hi; ++p) run_part(*parts_[p - 1], compute);
      });
      finished = grow_stalled();
    }
    return join();
  }

 private:
  /// Rows lo..hi and the scratch to build them.
  struct part {
    int lo = 1, hi = 0, next = 1;
    int turned = 0;         // variables that become C
    int zero_row_sums = 0;  // rows that stay unscaled
    bool row_full = false, store_full = false;
    int slots = 0;          // room for the row under construction
    std::int64_t used = 0;  // entries in the store
    work_array<int> slot_of, row_columns, row_flags, columns;
    work_array<double> row_values, values;
  };

  int team() const { return parts_.count(); }
  static void allocate_row(part& p);
  bool grow_stalled();
  int join();
  void apply_pending();
  bool put_identities(part& p, int lo, int hi);
  bool keep(part& p, const interpolation_row& row);
  bool turn(part& p, int i, int& last);

  template <class Compute>
  void run_part(part& p, Compute compute) {
    interpolation_row row(m_, lv_.icg, o_, p.slot_of, p.row_columns, p.row_values, p.row_flags, p.slots);
    for (int i = p.next; i <= p.hi; ++i) {
      p.next = i;
      lv_.iw[i + 1] = 0;
      if (lv_.icg[i] > 0) {
        if (!put_identities(p, i, i)) return;
        continue;
      }
      if (lv_.icg[i] == state_ff || lv_.icg[i] == state_not_taking_part) continue;
      if (o_.nprim > 0 && lv_.iu[i] != o_.nprim) continue;
      switch (compute(row, i)) {
        case outcome::weights:
          if (!keep(p, row)) return;
          break;
        case outcome::becomes_c:
          if (!turn(p, i, i)) return;
          break;
        case outcome::no_room:
          p.row_full = true;
          return;
        case outcome::empty:
          break;
      }
    }
    p.next = p.hi + 1;
  }

  level& lv_;
  const couplings m_;
  const interpolation_options o_;
  bool by_points_;
  numbered_list<std::unique_ptr<part>> parts_;
};

}  // namespace tier
