// The three passes of aggregation.
#include "tier/aggregation/aggregates.h"

namespace tier::aggregation {

namespace {

constexpr int isolated = -1, still_free = -2;
constexpr const char* routine = "form_aggregates";

class front {
 public:
  front(int n, const from_zero<int>& start, const from_zero<int>& column, const from_zero<float>& norm,
        double theta, from_zero<int>& aggregate)
      : n_(n), start_(start), column_(column), norm_(norm), theta2_(theta * theta), of_(aggregate) {
    of_.allocate(n, still_free, "aggregate", routine);
    for (int i = 0; i < n; ++i)
      if (!coupled(i)) of_[i] = isolated;
  }

  int run() {
    pass_through();
    const int of_front = count_;
    join_leftovers(of_front);
    form_rest();
    return count_;
  }

 private:
  bool coupled(int i) const {
    for (int k = start_[i] + 1; k < start_[i + 1]; ++k)
      if (norm_[k] > 0.0f) return true;
    return false;
  }
  double diagonal(int i) const { return norm_[start_[i]]; }
  bool strong(int i, int k) const {
    const double v = norm_[k];
    return v * v > theta2_ * diagonal(i) * diagonal(column_[k]);
  }

  int couplings(int i) const { return start_[i + 1] - start_[i] - 1; }

  /// All of its couplings stand well above the limit of strength.
  bool isotropic(int i) const {
    constexpr double margin = 1.5 * 1.5;
    for (int k = start_[i] + 1; k < start_[i + 1]; ++k) {
      const double v = norm_[k];
      if (v * v <= margin * theta2_ * diagonal(i) * diagonal(column_[k])) return false;
    }
    return true;
  }

  /// Where meshes alternate points of few and of many neighbours, one of few makes too small an aggregate.
  bool outdone(int i, int neighbour) const {
    return 2 * couplings(i) <= couplings(neighbour) && isotropic(i) && isotropic(neighbour);
  }

  void visit(int i, int& end) {
    if (seen_[i]) return;
    seen_[i] = 1;
    queue_[end++] = i;
  }

  void pass_through() {
    seen_.allocate(n_, char{0}, "seen", routine);
    queue_.allocate(n_, "queue", routine);
    int next = 0, end = 0;
    for (int seed = 0; seed < n_; ++seed) {
      visit(seed, end);
      for (; next < end; ++next) {
        const int i = queue_[next];
        take_if_root(i);
        for (int k = start_[i] + 1; k < start_[i + 1]; ++k)
          if (strong(i, k)) visit(column_[k], end);
      }
    }
  }

  void take_if_root(int i) {
    if (of_[i] != still_free) return;
    bool any = false;
    for (int k = start_[i] + 1; k < start_[i + 1]; ++k) {
      if (!strong(i, k)) continue;
      if (of_[column_[k]] != still_free) return;
      if (outdone(i, column_[k])) return;
      any = true;
    }
    if (any) take_free_neighbours(i);
  }

  void take_free_neighbours(int i) {
    of_[i] = count_;
    for (int k = start_[i] + 1; k < start_[i + 1]; ++k)
      if (strong(i, k) && of_[column_[k]] == still_free) of_[column_[k]] = count_;
    ++count_;
  }

  /// A point that joins here is not yet one that others can join, so the order doesn't matter.
  void join_leftovers(int of_front) {
    for (int i = 0; i < n_; ++i) queue_[i] = of_[i];
    for (int i = 0; i < n_; ++i) {
      if (queue_[i] != still_free) continue;
      double best = 0.0;
      for (int k = start_[i] + 1; k < start_[i + 1]; ++k) {
        const int j = column_[k];
        if (queue_[j] < 0 || queue_[j] >= of_front) continue;
        const double share = norm_[k] / diagonal(j);
        if (share > best) {
          best = share;
          of_[i] = queue_[j];
        }
      }
    }
  }

  void form_rest() {
    for (int i = 0; i < n_; ++i)
      if (of_[i] == still_free) take_free_neighbours(i);
  }

  int n_, count_ = 0;
  const from_zero<int>&start_, &column_;
  const from_zero<float>& norm_;
  double theta2_;
  from_zero<int>& of_;
  from_zero<char> seen_;
  from_zero<int> queue_;
};

}  // namespace

int form_aggregates(int n, const from_zero<int>& start, const from_zero<int>& column,
                    const from_zero<float>& norm, double theta, from_zero<int>& aggregate) {
  return front(n, start, column, norm, theta, aggregate).run();
}

}  // namespace tier::aggregation
