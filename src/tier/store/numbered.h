// Small tables by the number of a level, a thread, a round or a code: numbers are signed here, so that an
// index needs no cast. Builds with assertions check each index. Large arrays are work_array.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

namespace tier {

/// Entries 0..count-1 that are always there.
template <class T, std::size_t count>
struct numbered : std::array<T, count> {
  using base = std::array<T, count>;
  constexpr T& operator[](int i) { return base::operator[](checked(i)); }
  constexpr const T& operator[](int i) const { return base::operator[](checked(i)); }

 private:
  static constexpr std::size_t checked(int i) {
    assert(i >= 0 && i < static_cast<int>(count));
    return static_cast<std::size_t>(i);
  }
};

/// Entries 0..count-1, of which there are as many as asked for.
template <class T>
class numbered_list {
 public:
  numbered_list() = default;
  numbered_list(std::initializer_list<T> entries) : entries_(entries) {}
  explicit numbered_list(int count, const T& value = T()) { assign(count, value); }

  void assign(int count, const T& value) { entries_.assign(size_of(count), value); }
  void resize(int count) { entries_.resize(size_of(count)); }
  void reserve(int count) { entries_.reserve(size_of(count)); }
  void push_back(T value) { entries_.push_back(std::move(value)); }
  void clear() { entries_.clear(); }

  bool empty() const { return entries_.empty(); }
  int count() const { return static_cast<int>(entries_.size()); }
  T& operator[](int i) { return entries_[checked(i)]; }
  const T& operator[](int i) const { return entries_[checked(i)]; }
  T& front() { return entries_.front(); }
  const T& front() const { return entries_.front(); }
  T& back() { return entries_.back(); }
  const T& back() const { return entries_.back(); }
  const T* data() const { return entries_.data(); }
  auto begin() { return entries_.begin(); }
  auto end() { return entries_.end(); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

 private:
  static std::size_t size_of(int count) {
    assert(count >= 0);
    return static_cast<std::size_t>(count);
  }
  std::size_t checked(int i) const {
    assert(i >= 0 && i < count());
    return static_cast<std::size_t>(i);
  }

  std::vector<T> entries_;
};

}  // namespace tier
