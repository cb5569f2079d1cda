// Moving rows of one state behind those of the other, in place.
#include "tier/solve/rows_by_state.h"

#include <cstring>
#include <memory>

namespace tier {

namespace {

bool coarse(const level& l, int i) { return l.icg[i] > 0; }

// Of rows that overlap, y begins before x in move_down and behind it in move_up.
// They are too short for memmove.
template <class T>
void move_down(const T* x, int count, T* y) {
  for (int k = 0; k < count; ++k) y[k] = x[k];
}

template <class T>
void move_up(const T* x, int count, T* y) {
  for (int k = count - 1; k >= 0; --k) y[k] = x[k];
}

/// The room as `count` numbers of another type.
template <class T>
T* begin_numbers(double* room, std::int64_t count) {
  T* const first = reinterpret_cast<T*>(room);
  std::uninitialized_default_construct_n(first, count);
  return first;
}

/// Rows ia[i] .. ia[i+1]-1 of x: C rows into the room, F rows together,
/// C rows behind them; the C rows have `stored` entries.
template <class T>
void move_coarse_behind(const level& l, view<int> ia, T* x, double* room, std::int64_t stored) {
  T* const store = begin_numbers<T>(room, stored);
  T *to = x, *kept = store;
  for (int i = 1; i <= l.n; ++i) {
    const T* const row = x + ia[i] - 1;
    const int count = ia[i + 1] - ia[i];
    T*& end = coarse(l, i) ? kept : to;
    move_down(row, count, end);
    end += count;
  }
  std::memcpy(to, store, static_cast<std::size_t>(kept - store) * sizeof(T));
}

/// The reverse.
template <class T>
void move_coarse_back(const level& l, view<int> ia, T* x, double* room, std::int64_t stored) {
  T* const store = begin_numbers<T>(room, stored);
  const T* from = x + ia[l.n + 1] - 1 - stored;
  const T* kept = store + stored;
  std::memcpy(store, from, static_cast<std::size_t>(stored) * sizeof(T));
  for (int i = l.n; i >= 1; --i) {
    const int count = ia[i + 1] - ia[i];
    const T*& end = coarse(l, i) ? kept : from;
    end -= count;
    move_up(end, count, x + ia[i] - 1);
  }
}

}  // namespace

std::int64_t entries_of_coarse_rows(const level& l) {
  std::int64_t count = 0;
  for (int i = 1; i <= l.n; ++i)
    if (coarse(l, i)) count += l.ia[i + 1] - l.ia[i];
  return count;
}

rows_by_state::rows_by_state(level& l, view<double> store) : level_(l), natural_(l.ia), store_(store) {
  constexpr const char* routine = "rows_by_state";
  ia_.allocate(l.n + 1, "ia", routine);
  order_.allocate(l.n, "order", routine);
  for (int i = 1; i <= l.n; ++i)
    if (!coarse(l, i)) order_[++fine_] = i;
  for (int i = 1, place = fine_; i <= l.n; ++i)
    if (coarse(l, i)) order_[++place] = i;
  ia_[1] = 1;
  for (int place = 1; place <= l.n; ++place)
    ia_[place + 1] = ia_[place] + natural_[order_[place] + 1] - natural_[order_[place]];

  move_coarse_behind(l, natural_, l.a.data(), store.data(), coarse_entries());
  move_coarse_behind(l, natural_, l.ja.data(), store.data(), coarse_entries());
  l.ia = ia_;
  l.order = order_;
}

rows_by_state::~rows_by_state() {
  level& l = level_;
  l.ia = natural_;
  l.order = {};
  move_coarse_back(l, natural_, l.a.data(), store_.data(), coarse_entries());
  move_coarse_back(l, natural_, l.ja.data(), store_.data(), coarse_entries());
}

}  // namespace tier
