// Approximate minimum degree on a quotient graph.
#include "tier/solve/min_degree.h"

#include <algorithm>
#include <cstdint>

#include "tier/store/input_checks.h"

namespace tier {

namespace {

constexpr const char* routine = "minimum_degree_order";

/// The graph while it is eliminated. A variable i owns the slice row[i] .. row[i]+elements[i]+vars[i]-1 of
/// `adjacent`: first its elements, then its variables. It never grows: each new element replaces something.
/// An element e owns pool[start[e]] .. pool[start[e]+size[e]-1], its principal variables.
class quotient_graph {
 public:
  quotient_graph(int n, view<const int> ia, view<const int> ja) : n_(n) {
    for (work_array<int>* x :
         {&row_, &elements_, &vars_, &weight_, &degree_, &head_, &next_, &last_, &start_, &size_, &outside_,
          &mark_, &member_, &tail_, &hash_head_, &hash_next_, &hash_, &compare_, &living_})
      x->allocate(n + 2, 0, "order", routine);
    symmetric_pattern(ia, ja);
    pool_.allocate(std::max<std::int64_t>(adjacent_.size(), n) + n + 1, "pool", routine);
    for (int i = 1; i <= n; ++i) {
      weight_[i] = 1;
      tail_[i] = i;
      degree_[i] = vars_[i];
    }
    for (int i = n; i >= 1; --i) list_in(i);
  }

  void eliminate_all(work_array<int>& order, work_array<int>& below) {
    for (int done = 0, least = 0; done < n_;) {
      while (head_[least + 1] == 0) ++least;
      const int p = head_[least + 1];
      list_out(p);
      form_element(p);
      count_outside(p);
      update_variables(p);
      merge_alike(p);
      const int lightest = finish_element(p, n_ - done - weight_[p]);
      for (int v = p, w = weight_[p]; v != 0; v = member_[v], --w) {
        order[++done] = v;
        below[done] = element_weight_ + w - 1;
      }
      weight_[p] = 0;
      least = std::min(least, lightest);
    }
  }

 private:
  /// Pattern of A + A^T without the diagonal, each pair once in each direction.
  void symmetric_pattern(view<const int> ia, view<const int> ja) {
    const int n = n_;
    require_countable(2 * std::int64_t{ia[n + 1]} + n, "order", routine);
    work_array<int> column, place, rows;  // the transposed pattern
    column.allocate(n + 2, 0, "order", routine);
    for (int k = 1; k < ia[n + 1]; ++k) ++column[ja[k] + 1];
    column[1] = 1;
    for (int i = 2; i <= n + 1; ++i) column[i] += column[i - 1];
    place.allocate(n + 1, "order", routine);
    std::copy_n(column.data(), n + 1, place.data());
    rows.allocate(ia[n + 1] - 1, "order", routine);
    for (int i = 1; i <= n; ++i)
      for (int k = ia[i]; k < ia[i + 1]; ++k) rows[place[ja[k]]++] = i;
    adjacent_.allocate(2 * (static_cast<std::int64_t>(ia[n + 1]) - 1) + 1, "order", routine);
    int at = 1;
    for (int i = 1; i <= n; ++i) {
      row_[i] = at;
      mark_[i] = i;
      const auto add = [&](int j) {
        if (mark_[j] == i) return;
        mark_[j] = i;
        adjacent_[at++] = j;
      };
      for (int k = ia[i]; k < ia[i + 1]; ++k) add(ja[k]);
      for (int k = column[i]; k < column[i + 1]; ++k) add(rows[k]);
      vars_[i] = at - row_[i];
    }
    for (int i = 1; i <= n; ++i) mark_[i] = 0;
    stamp_ = 0;
  }

  void list_in(int i) {
    const int d = degree_[i] + 1;
    next_[i] = head_[d];
    last_[i] = 0;
    if (head_[d] != 0) last_[head_[d]] = i;
    head_[d] = i;
  }
  void list_out(int i) {
    if (last_[i] != 0)
      next_[last_[i]] = next_[i];
    else
      head_[degree_[i] + 1] = next_[i];
    if (next_[i] != 0) last_[next_[i]] = last_[i];
  }

  bool is_variable(int i) const { return weight_[i] > 0; }

  /// Room for `needed` more places at the pool's end: moves the living elements together, then grows.
  void make_room(std::int64_t needed) {
    if (top_ + needed <= pool_.size()) return;
    std::int64_t to = 1;
    int kept = 0;
    for (int k = 1; k <= alive_; ++k) {
      const int e = living_[k];
      if (size_[e] == 0) continue;
      std::copy_n(pool_.data() + start_[e] - 1, size_[e], pool_.data() + to - 1);
      start_[e] = static_cast<int>(to);
      to += size_[e];
      living_[++kept] = e;
    }
    alive_ = kept;
    top_ = to - 1;
    if (top_ + needed > pool_.size()) pool_.resize(2 * pool_.size() + needed, "pool", routine);
  }

  /// L_p: all principal variables next to p, by its variables and its elements, which p absorbs.
  void form_element(int p) {
    std::int64_t bound = vars_[p];
    for (int k = 0; k < elements_[p]; ++k) bound += size_[adjacent_[row_[p] + k]];
    make_room(bound);
    const int first = static_cast<int>(top_) + 1;
    ++stamp_;
    mark_[p] = stamp_;
    element_weight_ = 0;
    const auto take = [&](int i) {
      if (!is_variable(i) || mark_[i] == stamp_) return;
      mark_[i] = stamp_;
      pool_[++top_] = i;
      element_weight_ += weight_[i];
    };
    for (int k = 0; k < elements_[p]; ++k) {
      const int e = adjacent_[row_[p] + k];
      for (int m = 0; m < size_[e]; ++m) take(pool_[start_[e] + m]);
      size_[e] = 0;
    }
    for (int k = elements_[p]; k < elements_[p] + vars_[p]; ++k) take(adjacent_[row_[p] + k]);
    start_[p] = first;
    size_[p] = static_cast<int>(top_) + 1 - first;
    living_[++alive_] = p;
    element_weights_at(p) = element_weight_;
  }

  /// outside[e] = weight of L_e without L_p for every element next to a variable of L_p.
  void count_outside(int p) {
    for (int m = 0; m < size_[p]; ++m) {
      const int i = pool_[start_[p] + m];
      for (int k = 0; k < elements_[i]; ++k) {
        const int e = adjacent_[row_[i] + k];
        if (size_[e] == 0) continue;
        if (seen_at(e) != stamp_) {
          seen_at(e) = stamp_;
          outside_[e] = element_weights_at(e);
        }
        outside_[e] -= weight_[i];
      }
    }
  }

  /// New lists and degrees of the variables of L_p; what lies within L_p leaves their lists.
  void update_variables(int p) {
    for (int m = 0; m < size_[p]; ++m) {
      const int i = pool_[start_[p] + m];
      list_out(i);
      const int first = row_[i], old_elements = elements_[i], old_end = first + old_elements + vars_[i];
      int at = first, degree = 0;
      unsigned hash = static_cast<unsigned>(p);
      for (int k = first; k < first + old_elements; ++k) {
        const int e = adjacent_[k];
        if (size_[e] == 0 || outside_[e] <= 0) continue;  // absorbed, or all within L_p
        adjacent_[at++] = e;
        degree += outside_[e];
        hash += static_cast<unsigned>(e);
      }
      const int kept_elements = at - first;
      for (int k = first + old_elements; k < old_end; ++k) {
        const int j = adjacent_[k];
        if (!is_variable(j) || mark_[j] == stamp_) continue;
        adjacent_[at++] = j;
        degree += weight_[j];
        hash += static_cast<unsigned>(j);
      }
      // p goes in as the last element; the variable in its place moves to the end
      const int end = at++;
      adjacent_[end] = adjacent_[first + kept_elements];
      adjacent_[first + kept_elements] = p;
      elements_[i] = kept_elements + 1;
      vars_[i] = at - first - elements_[i];
      degree_[i] = std::min(degree_[i], degree);
      hash_[i] = static_cast<int>(hash % static_cast<unsigned>(n_)) + 1;
    }
    for (int m = 0; m < size_[p]; ++m) hash_head_[hash_[pool_[start_[p] + m]]] = 0;
  }

  /// Same lists but for each other: i and j are eliminated together from now on.
  bool alike(int i, int j) {
    if (elements_[i] != elements_[j] || vars_[i] != vars_[j]) return false;
    for (int k = 0; k < elements_[j] + vars_[j]; ++k)
      if (compare_[adjacent_[row_[j] + k]] != comparison_) return false;
    return true;
  }

  void merge_alike(int p) {
    for (int m = 0; m < size_[p]; ++m) {
      const int i = pool_[start_[p] + m];
      hash_next_[i] = hash_head_[hash_[i]];
      hash_head_[hash_[i]] = i;
    }
    for (int m = 0; m < size_[p]; ++m) {
      const int bucket = hash_[pool_[start_[p] + m]];
      for (int i = hash_head_[bucket]; i != 0; i = hash_next_[i]) merge_into(i);
      hash_head_[bucket] = 0;
    }
  }

  void merge_into(int i) {
    if (!is_variable(i) || hash_next_[i] == 0) return;
    ++comparison_;
    for (int k = 0; k < elements_[i] + vars_[i]; ++k) compare_[adjacent_[row_[i] + k]] = comparison_;
    for (int before = i, j = hash_next_[i]; j != 0; j = hash_next_[before]) {
      if (!is_variable(j) || !alike(i, j)) {
        before = j;
        continue;
      }
      weight_[i] += weight_[j];
      weight_[j] = 0;
      member_[tail_[i]] = j;
      tail_[i] = tail_[j];
      hash_next_[before] = hash_next_[j];
    }
  }

  /// Final degrees; variables next to nothing but p go with it. Returns the smallest degree that was listed.
  int finish_element(int p, int remaining) {
    int kept = 0, lightest = n_;
    for (int m = 0; m < size_[p]; ++m) {
      const int i = pool_[start_[p] + m];
      if (!is_variable(i)) continue;
      if (elements_[i] == 1 && vars_[i] == 0) {  // mass elimination
        element_weight_ -= weight_[i];
        weight_[p] += weight_[i];
        member_[tail_[p]] = i;
        tail_[p] = tail_[i];
        weight_[i] = 0;
        continue;
      }
      pool_[start_[p] + kept++] = i;
    }
    for (int m = 0; m < kept; ++m) {
      const int i = pool_[start_[p] + m];
      degree_[i] = std::min(degree_[i] + element_weight_ - weight_[i], std::max(0, remaining - weight_[i]));
      lightest = std::min(lightest, degree_[i]);
      list_in(i);
    }
    size_[p] = kept;
    top_ = start_[p] + kept - 1;
    element_weights_at(p) = element_weight_;
    return lightest;
  }

  int& element_weights_at(int e) { return degree_[e]; }  // an eliminated variable needs no degree
  int& seen_at(int e) { return mark_[e]; }               // nor a mark of its own

  int n_, stamp_ = 0, comparison_ = 0, element_weight_ = 0, alive_ = 0;
  std::int64_t top_ = 0;
  work_array<int> adjacent_, pool_, row_, elements_, vars_, weight_, degree_, head_, next_, last_, start_,
      size_, outside_, mark_, member_, tail_, hash_head_, hash_next_, hash_, compare_, living_;
};

}  // namespace

void minimum_degree_order(int n, view<const int> ia, view<const int> ja, work_array<int>& order,
                          work_array<int>& below) {
  order.allocate(n, "order", routine);
  below.allocate(n, "order", routine);
  quotient_graph(n, ia, ja).eliminate_all(order, below);
}

}  // namespace tier
