// Block interpolation, single-pass and multipass.
#include "tier/setup/pbint.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tier/setup/dense_block.h"
#include "tier/setup/interpolation_row.h"
#include "tier/setup/pcol.h"
#include "tier/setup/primary.h"
#include "tier/setup/weight_assembly.h"
#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"

namespace tier {

namespace {

/// One block of the row of points under construction.
struct slot {
  int point = 0;
  bool interpolatory = false;
  dense_block block;
};

/// The row of blocks of one fine point; slot 0 is the point itself. Slots and scratch keep their room from
/// point to point.
class block_row {
 public:
  block_row(level& lv, const block_options& o, const char* routine) : lv_(lv), o_(o), routine_(routine) {
    slot_of_.allocate(lv.npnts, 0, "nbors", routine);
  }

  int first(int point) const { return lv_.iv[point]; }
  int count(int point) const { return lv_.iv[point + 1] - lv_.iv[point]; }
  int state(int point) const { return lv_.icg[first(point)]; }

  template <class Visit>
  void for_strong_points(int point, Visit visit) const {
    if (o_.use_primary_matrix) {
      for (int p = lv_.ib[point] + 1; p <= lv_.jb[lv_.ib[point]]; ++p) visit(lv_.jb[p]);
      return;
    }
    const int i = primary_row(point);
    for (int p = lv_.ia[i] + 1; p <= lv_.ja[lv_.ia[i]]; ++p) visit(lv_.ip[lv_.ja[p]]);
  }

  /// The blocks of A; returns the number of interpolatory ones.
  int start(int point) {
    clear();
    point_ = point;
    slot_at(point);
    for (int i = first(point); i < first(point) + count(point); ++i)
      for_entries(i, [&](int l, double v) {
        if (state(lv_.ip[l]) != state_ff || lv_.ip[l] == point) add(lv_.ip[l], i - first(point), l, v);
      });
    int interpolatory = 0;
    for_strong_points(point, [&](int j) {
      const int s = slot_of_[j];
      if (s == 0 || state(j) <= 0) return;
      slots_[static_cast<std::size_t>(s - 1)].interpolatory = true;
      ++interpolatory;
    });
    return interpolatory;
  }

  /// Replaces strong F points by their block rows of A.
  void eliminate_strong() {
    if (!o_.may_eliminate)
      fail(ierr_interpolation, std::string("eelim=.true. but allow_elim.ne.1 in (") + routine_ + ")");
    strong_.clear();
    for_strong_points(point_, [&](int j) {
      if (state(j) < 0) strong_.push_back(j);
    });
    for (const int j : strong_) eliminate_block_row(j);
  }

  /// Replaces strong F points that have weights; returns how many.
  int eliminate_weights(const weight_rows& old) {
    strong_.clear();
    for_strong_points(point_, [&](int j) {
      if (state(j) < 0 && old.has(first(j))) strong_.push_back(j);
    });
    for (const int j : strong_) {
      const dense_block& c = take_block(j);
      for (int r = 0; r < c.rows; ++r) {
        for (int k = 0; k < c.columns; ++k) {
          const int row = first(j) + k;
          for (int p = old.iw[row]; p < old.iw[row + 1]; ++p) {
            const int target = lv_.ip[old.jw[p]];
            add(target, r, old.jw[p], c(r, k) * old.w[p]);
            slots_[static_cast<std::size_t>(slot_of_[target] - 1)].interpolatory = true;
          }
        }
      }
    }
    return static_cast<int>(strong_.size());
  }

  /// Turns the interpolatory slots into weights; false when there are none.
  bool finish() {
    double all = 0.0, largest = 0.0;
    norms_.clear();
    for (const slot& s : slots()) {
      norms_.push_back(block_norm(s.block.v.data(), s.block.rows, s.block.columns, o_.norm));
      if (s.point != point_) all += norms_.back();
      if (s.interpolatory) largest = std::max(largest, norms_.back());
    }
    double kept = 0.0;
    for (std::size_t s = 0; s < used_; ++s) {
      slots_[s].interpolatory = slots_[s].interpolatory && norms_[s] > 0.0 && norms_[s] >= o_.etr * largest;
      if (slots_[s].interpolatory) kept += norms_[s];
    }
    if (kept == 0.0) return false;
    const double scale = -all / kept;
    for (slot& s : std::span(slots_).first(used_)) {
      if (!s.interpolatory) continue;
      diagonal_ = slots_[0].block;
      if (!solve_from_left(diagonal_, s.block))
        fail(ierr_interpolation, std::string("Problems with gdec8/gsol8 in (") + routine_ + ")");
      for (double& v : s.block.v) v *= scale;
    }
    return true;
  }

  std::span<const slot> slots() const { return std::span(slots_).first(used_); }

 private:
  int primary_row(int point) const {
    for (int i = first(point); i < first(point) + count(point); ++i)
      if (lv_.iu[i] == o_.nprim) return i;
    fail(ierr_interpolation, std::string("nprim not found on current point (") + routine_ + ")!");
  }

  /// visit(column, value); the diagonal's slot holds the last strong position.
  template <class Visit>
  void for_entries(int i, Visit visit) const {
    visit(i, lv_.a[lv_.ia[i]]);
    for (int p = lv_.ia[i] + 1; p < lv_.ia[i + 1]; ++p) visit(lv_.ja[p], lv_.a[p]);
  }

  slot& slot_at(int point) {
    if (slot_of_[point] == 0) {
      if (used_ == slots_.size()) slots_.emplace_back();
      slot& s = slots_[used_++];
      s.point = point;
      s.interpolatory = false;
      s.block.assign(count(point_), count(point));
      slot_of_[point] = static_cast<int>(used_);
    }
    return slots_[static_cast<std::size_t>(slot_of_[point] - 1)];
  }

  void add(int point, int r, int column, double v) { slot_at(point).block(r, column - first(point)) += v; }

  /// Valid up to the next call.
  const dense_block& take_block(int j) {
    slot& s = slot_at(j);
    taken_ = s.block;
    std::fill(s.block.v.begin(), s.block.v.end(), 0.0);
    return taken_;
  }

  void eliminate_block_row(int j) {
    diagonal_.assign(count(j), count(j));
    for (int i = first(j); i < first(j) + count(j); ++i)
      for_entries(i, [&](int l, double v) {
        if (lv_.ip[l] == j) diagonal_(l - first(j), i - first(j)) += v;  // transposed
      });
    transpose(take_block(j), factor_);  // factor^T = A_ij D_j^-1
    if (!solve_from_left(diagonal_, factor_))
      fail(ierr_interpolation, std::string("Problems with gdec8/gsol8 in (") + routine_ + ")");
    for (int i = first(j); i < first(j) + count(j); ++i) {
      for_entries(i, [&](int l, double v) {
        const int target = lv_.ip[l];
        if (target == j || (state(target) == state_ff && target != point_)) return;
        for (int r = 0; r < count(point_); ++r) add(target, r, l, -factor_(i - first(j), r) * v);
      });
    }
    for_strong_points(j, [&](int l) {
      if (l != point_ && slot_of_[l] != 0 && state(l) > 0)
        slots_[static_cast<std::size_t>(slot_of_[l] - 1)].interpolatory = true;
    });
  }

  void clear() {
    for (const slot& s : slots()) slot_of_[s.point] = 0;
    used_ = 0;
  }

  level& lv_;
  const block_options& o_;
  const char* routine_;
  work_array<int> slot_of_;
  std::vector<slot> slots_;  // the first used_ are of this point
  std::size_t used_ = 0;
  std::vector<int> strong_;
  std::vector<double> norms_;
  dense_block diagonal_, taken_, factor_;
  int point_ = 0;
};

/// Appends rows of the level, point by point.
class row_writer {
 public:
  explicit row_writer(level& lv) : lv_(lv) {
    lv.iw.allocate(std::int64_t{lv.n} + 1, "iw", "pbint");
    lv.iw[1] = 1;
    reserve(2 * std::int64_t{lv.n});
  }
  void identity(int i) {
    reserve(1);
    put(i, 1.0);
    lv_.iw[i + 1] = next_;
  }
  void empty(int i) { lv_.iw[i + 1] = next_; }
  void copy(int i, const weight_rows& old) {
    reserve(old.iw[i + 1] - old.iw[i]);
    for (int p = old.iw[i]; p < old.iw[i + 1]; ++p) put(old.jw[p], old.w[p]);
    lv_.iw[i + 1] = next_;
  }
  void weights(int i, int r, const block_row& row) {
    for (const slot& s : row.slots()) {
      if (!s.interpolatory) continue;
      reserve(s.block.columns);
      for (int c = 0; c < s.block.columns; ++c) put(row.first(s.point) + c, s.block(r, c));
    }
    lv_.iw[i + 1] = next_;
  }
  void finish() {
    lv_.jw.resize(next_ - 1, "jw", "pbint");
    lv_.w.resize(next_ - 1, "w", "pbint");
  }

 private:
  void reserve(std::int64_t more) {
    if (next_ - 1 + more <= lv_.jw.size()) return;
    require_countable(next_ - 1 + more, "jw", "pbint");
    const std::int64_t room = lv_.jw.size() * 3 / 2 + more;
    lv_.jw.resize(room, "jw", "pbint");
    lv_.w.resize(room, "w", "pbint");
  }
  void put(int column, double v) {
    lv_.jw[next_] = column;
    lv_.w[next_++] = v;
  }

  level& lv_;
  int next_ = 1;
};

template <class Each>
void for_variables(const level& lv, int point, Each each) {
  for (int i = lv.iv[point]; i < lv.iv[point + 1]; ++i) each(i);
}

int turn_point(level& lv, int point, row_writer& out) {
  for_variables(lv, point, [&](int i) {
    lv.icg[i] = state_c;
    out.identity(i);
  });
  return lv.iv[point + 1] - lv.iv[point];
}

void write_point(const level& lv, int point, const block_row& row, row_writer& out) {
  for_variables(lv, point, [&](int i) { out.weights(i, i - lv.iv[point], row); });
}

/// C points get identity rows, FF points none; true when that was all.
bool write_plain_point(const level& lv, int point, row_writer& out) {
  const int state = lv.iv[point] < lv.iv[point + 1] ? lv.icg[lv.iv[point]] : state_ff;
  if (state < 0) return false;
  for_variables(lv, point, [&](int i) { state > 0 ? out.identity(i) : out.empty(i); });
  return true;
}

}  // namespace

int pbint1(level& lv, const block_options& o) {
  block_row row(lv, o, "pbint1");
  row_writer out(lv);
  int turned = 0;
  for (int point = 1; point <= lv.npnts; ++point) {
    if (write_plain_point(lv, point, out)) continue;
    bool eliminate = o.kind != interpolation_kind::direct;
    bool done = false;
    for (;;) {
      eliminate = row.start(point) == 0 || eliminate;
      if (eliminate) row.eliminate_strong();
      done = row.finish();
      if (done || eliminate) break;
      eliminate = true;
    }
    if (done) {
      write_point(lv, point, row, out);
    } else {
      info(message_class::note, "wscalpos=wscalneg=0 : critical situation in (pbint1)");
      turned += turn_point(lv, point, out);
    }
  }
  out.finish();
  return turned;
}

namespace {

[[noreturn]] void report_deadlock(const level& lv, int rest) {
  int empty = 0, fine = 0, coarse = 0;
  for (int point = 1; point <= lv.npnts; ++point) {
    const int i = lv.iv[point];
    ++(i == lv.iv[point + 1] ? empty : lv.icg[i] > 0 ? coarse : fine);
  }
  fail(ierr_interpolation, formatted("Deadlock encountered with nrest=%d in (pbint2)! "
                                     "nempty,nfpnts,ncpnts= %d %d %d",
                                     rest, empty, fine, coarse));
}

}  // namespace

int pbint2(level& lv, const block_options& o) {
  if (!o.use_primary_matrix && o.nprim == 0) fail(ierr_interpolation, "nprim=0 in (pbint2)");
  block_row row(lv, o, "pbint2");
  lv.iw.release();
  int rest = lv.npnts;
  for (int before = rest + 1; rest > 0;) {
    if (rest == before) report_deadlock(lv, rest);
    before = rest;
    rest = 0;
    const detached_weights earlier(lv);
    const weight_rows old = earlier.rows();
    row_writer out(lv);
    for (int point = 1; point <= lv.npnts; ++point) {
      if (write_plain_point(lv, point, out)) continue;
      if (old.has(lv.iv[point])) {
        for_variables(lv, point, [&](int i) { out.copy(i, old); });
        continue;
      }
      int sources = row.start(point);
      if (old.iw) sources += row.eliminate_weights(old);
      if (sources > 0 && row.finish()) {
        write_point(lv, point, row, out);
      } else {
        ++rest;
        for_variables(lv, point, [&](int i) { out.empty(i); });
      }
    }
    out.finish();
  }
  return 0;
}

}  // namespace tier
