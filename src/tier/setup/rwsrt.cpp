// Strong couplings by sorting of rows, types 1 to 5.
#include "tier/setup/rwsrt.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <string>
#include <utility>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/row_loop.h"

namespace tier {

namespace {

// A column may be read by other threads' eliminations while its row's owner turns its sign, which is the mark
// of a strong coupling. Relaxed atomic access costs nothing and reads either sign.
int column(const couplings& m, int p) {
  return std::abs(std::atomic_ref<int>(m.ja[p]).load(std::memory_order_relaxed));
}

void mark(const couplings& m, int p) {
  std::atomic_ref<int>(m.ja[p]).store(-m.ja[p], std::memory_order_relaxed);
}

/// What one pass over the off-diagonals of a row tells.
struct extremes {
  double sum = 0.0, dmin = 0.0, dmax = 0.0;
  int at_min = 0, at_max = 0;  // first position of each, 0: none
};

/// Marks the strong couplings row by row; between mark and sort, the diagonal's slot holds minus the position
/// of the row's extreme entry.
template <bool kinds>
class marker {
 public:
  /// own: scratch for the positions of a row; r: dense scratch of n reals, needed for elimination alone.
  marker(const couplings& m, const strength_options& o, strong_kind type, int* own, view<double> r)
      : m_(m), o_(o), type_(type), own_(own), r_(r) {
    counts.all_dominated = o.eps < 1.0;
  }

  strength_counts counts;

  void mark_row(int i) {
    const int diagonal = m_.ia[i];
    m_.ja[diagonal] = diagonal;
    if (m_.length(i) == 1) {
      ++counts.dirichlet;
      return;
    }
    gather(i);
    const double aii = m_.a[diagonal];
    const extremes e = scan();
    if (counts.all_dominated && o_.eps * aii < e.sum) counts.all_dominated = false;
    if (e.sum <= o_.ecg1 * aii) {
      ++counts.diagdom;
    } else if (e.sum > std::abs(aii) * o_.ewt1) {
      ++counts.violating;
      m_.ja[diagonal] = 0;
    } else if (aii <= 0.0) {
      ++counts.nonpositive;
      m_.ja[diagonal] = 0;
    } else {
      mark_couplings(i, e);
    }
  }

  /// A row of another function than the primary one: is it dominant?
  void test_dominance(int i) {
    gather(i);
    if (o_.eps * m_.a[m_.ia[i]] < scan().sum) counts.all_dominated = false;
  }

  /// Largest first, the other marked entries behind it by exchange from both ends.
  void sort_row(int i) {
    const int diagonal = m_.ia[i], first = diagonal + 1, end = m_.ia[i + 1];
    const int extreme = -m_.ja[diagonal];
    if (extreme <= 0) return;
    exchange(first, extreme);
    int front = first;
    for (int back = end - 1; back > front; --back) {
      if (m_.ja[back] > 0) continue;
      while (front < back && m_.ja[front] < 0) ++front;
      if (front < back) exchange(front, back);
    }
    int last = diagonal;
    while (last + 1 < end && m_.ja[last + 1] < 0) {
      ++last;
      m_.ja[last] = -m_.ja[last];
    }
    m_.ja[diagonal] = last;
    counts.strong += last - diagonal;
  }

  void count_large_weak(int i) {
    const int diagonal = m_.ia[i], last = m_.last_strong(i);
    if (last <= diagonal) return;
    const double limit = o_.ecg2 * std::abs(m_.a[diagonal + 1]);
    for (int p = last + 1; p < m_.ia[i + 1]; ++p) {
      if (std::abs(m_.a[p]) > limit && (!kinds || m_.kind[m_.ja[p]] == m_.kind[i])) {
        ++counts.large_weak;
        return;
      }
    }
  }

 private:
  // Positions of the couplings within the row's own kind, so that later loops touch no others.
  void gather(int i) {
    first_ = m_.ia[i] + 1;
    count_ = m_.length(i) - 1;
    if constexpr (kinds) {
      const int kind = m_.kind[i];
      int n = 0;
      for (int p = first_; p < first_ + count_; ++p) {
        own_[n] = p;
        n += m_.kind[m_.ja[p]] == kind;
      }
      count_ = n;
    }
  }

  int position(int k) const { return kinds ? own_[k] : first_ + k; }

  extremes scan() const {
    extremes e;
    for (int k = 0; k < count_; ++k) {
      const int p = position(k);
      const double v = m_.a[p];
      e.sum += std::abs(v);
      if (v < e.dmin) {
        e.dmin = v;
        e.at_min = p;
      }
      if (v > e.dmax) {
        e.dmax = v;
        e.at_max = p;
      }
    }
    return e;
  }

  void mark_couplings(int i, const extremes& e) {
    const bool eliminating = eliminates(type_);
    const double ignored = -o_.ewt2 * e.dmin;
    if (e.at_min == 0) {
      ++counts.only_positive;
      if (type_ == strong_kind::negative_else_largest || type_ == strong_kind::eliminated_else_largest) {
        mark_positive(i, e);
      } else {
        m_.ja[m_.ia[i]] = 0;
      }
    } else if (eliminating && e.dmax > ignored) {
      eliminate_positive(i, e, ignored);
    } else {
      mark_negative(i, e);
    }
  }

  void mark_negative(int i, const extremes& e) {
    const double limit = e.dmin * o_.ecg2;
    for (int k = 0; k < count_; ++k)
      if (m_.a[position(k)] <= limit) mark(m_, position(k));
    m_.ja[m_.ia[i]] = -e.at_min;
  }

  void mark_positive(int i, const extremes& e) {
    const double limit = e.dmax * o_.ecg2;
    for (int k = 0; k < count_; ++k)
      if (m_.a[position(k)] >= limit) mark(m_, position(k));
    m_.ja[m_.ia[i]] = -e.at_max;
  }

  void elimination_failed(int i, const extremes& e) {
    ++counts.failed;
    if (type_ == strong_kind::eliminated_strictly) {
      m_.ja[m_.ia[i]] = 0;
    } else {
      mark_negative(i, e);
    }
  }

  /// Replaces each large positive coupling by what its row makes of it, in a copy of row i.
  void eliminate_into_copy(int i, double ignored) {
    for (int k = 0; k < count_; ++k) r_[m_.ja[position(k)]] = m_.a[position(k)];
    r_[i] = m_.a[m_.ia[i]];
    for (int k = 0; k < count_; ++k) {
      if (m_.a[position(k)] <= ignored) continue;
      const int j = m_.ja[position(k)];
      const double factor = -r_[j] / m_.a[m_.ia[j]];
      r_[j] = 0.0;
      for (int p = m_.ia[j] + 1; p < m_.ia[j + 1]; ++p) {
        const int l = column(m_, p);
        if (!kinds || m_.kind[l] == m_.kind[i]) r_[l] += m_.a[p] * factor;
      }
    }
  }

  void eliminate_positive(int i, const extremes& e, double ignored) {
    ++counts.eliminated;
    eliminate_into_copy(i, ignored);
    double rmin = 0.0;
    for (int k = 0; k < count_; ++k) rmin = std::min(rmin, r_[m_.ja[position(k)]]);
    if (rmin >= 0.0) {
      elimination_failed(i, e);
      return;
    }
    const double limit = e.dmin * o_.ecg2, reduced_limit = rmin * o_.ecg2;
    bool changed = false;
    double largest = 0.0;
    int extreme = 0;
    for (int k = 0; k < count_; ++k) {
      const int p = position(k);
      const double v = m_.a[p];
      if (v > limit) continue;
      if (r_[m_.ja[p]] > reduced_limit) {
        changed = true;
        continue;
      }
      mark(m_, p);
      if (v < largest) {
        largest = v;
        extreme = p;
      }
    }
    if (extreme == 0) {
      elimination_failed(i, e);
      return;
    }
    if (!changed) ++counts.ineffective;
    m_.ja[m_.ia[i]] = -extreme;
  }

  void exchange(int p, int q) {
    std::swap(m_.a[p], m_.a[q]);
    std::swap(m_.ja[p], m_.ja[q]);
  }

  const couplings& m_;
  const strength_options& o_;
  strong_kind type_;
  int* own_;
  view<double> r_;
  int first_ = 0, count_ = 0;
};

void add(strength_counts& total, const strength_counts& part) {
  total.strong += part.strong;
  total.all_dominated = total.all_dominated && part.all_dominated;
  total.dirichlet += part.dirichlet;
  total.diagdom += part.diagdom;
  total.violating += part.violating;
  total.nonpositive += part.nonpositive;
  total.only_positive += part.only_positive;
  total.eliminated += part.eliminated;
  total.failed += part.failed;
  total.ineffective += part.ineffective;
  total.large_weak += part.large_weak;
}

/// The type that is run: without ewt2 there is nothing to eliminate.
strong_kind effective_type(const strength_options& o) {
  if (!eliminates(o.kind) || o.ewt2 != 0.0) return o.kind;
  if (o.report)
    message("rwsrt(" + std::to_string(code_of(o.kind)) +
            "):      +++ enhanced sorting de-activated (etw2 not set)!");
  return o.kind == strong_kind::eliminated_else_largest ? strong_kind::negative_else_largest
                                                        : strong_kind::negative;
}

template <bool kinds>
strength_counts sort_all(const couplings& m, const strength_options& o, strong_kind type) {
  const int team = setup_team(m.n);
  const int longest = kinds ? longest_row(m.ia, m.n) : 1;
  const bool eliminating = eliminates(type);
  const std::int64_t dense = eliminating ? m.n : 0;
  work_array<int> own;
  work_array<double> r;
  own.allocate(std::int64_t{longest} * team, "own", "rwsrt");
  r.allocate(dense * team, "r", "rwsrt");
  strength_counts total;
  total.all_dominated = true;
  for_chunks(m.n, team, [&](const row_chunk& rows) {
    double* const column_of_thread = r.data() + dense * rows.tid;
    std::fill_n(column_of_thread, dense, 0.0);
    marker<kinds> pass(m, o, type, own.data() + std::int64_t{longest} * rows.tid,
                       view<double>(column_of_thread));
    const auto primary = [&](int i) { return o.nprim == 0 || m.kind[i] == o.nprim; };
    for (int i = rows.lo; i <= rows.hi; ++i) {
      if (!primary(i)) continue;
      pass.mark_row(i);
      if (!eliminating) pass.sort_row(i);
    }
    if (eliminating) {  // its rows are read by others in the order in which they came
      team_barrier(rows);
      for (int i = rows.lo; i <= rows.hi; ++i)
        if (primary(i)) pass.sort_row(i);
    }
    for (int i = rows.lo; o.nprim > 0 && pass.counts.all_dominated && i <= rows.hi; ++i)
      if (!primary(i)) pass.test_dominance(i);
    for (int i = rows.lo; o.report && i <= rows.hi; ++i)
      if (primary(i)) pass.count_large_weak(i);
#pragma omp critical(tier_rwsrt)
    add(total, pass.counts);
  });
  return total;
}

}  // namespace

strength_counts rwsrt(const couplings& m, const strength_options& o) {
  const strong_kind type = effective_type(o);
  return m.kind ? sort_all<true>(m, o, type) : sort_all<false>(m, o, type);
}

void print_strength_counts(const strength_counts& n, strong_kind kind) {
  const std::string head = "rwsrt(" + std::to_string(code_of(kind)) + "):      # ";
  const auto line = [](const std::string& text, int count) {
    if (count > 0) message(text + std::to_string(count));
  };
  if (n.dirichlet > 0 || n.diagdom > 0)
    message(head + "Dirichlet:  " + std::to_string(n.dirichlet) +
            " # strong diagdom:" + std::to_string(n.diagdom));
  line(head + "rows STRONGLY violating diagdom:        ", n.violating);
  line(head + "rows with non-positive diagonal entry:  ", n.nonpositive);
  line(head + "(remaining!) rows with ONLY pos entries:", n.only_positive);
  line(head + "rows with positive elimination          ", n.eliminated);
  line("                  failed               ", n.failed);
  line("                  ineffective          ", n.ineffective);
  line(head + "rows with large weak couplings:         ", n.large_weak);
}

void restore_diagonals(int n, view<const int> ia, view<int> ja) {
  for_chunks(n, setup_team(n), [&](const row_chunk& rows) {
    for (int i = rows.lo; i <= rows.hi; ++i) ja[ia[i]] = i;
  });
}

}  // namespace tier
