// A table of rows 1 to n, the index that mesh, model and results count by. Entry 0 exists and is unused.
// Used for the tables of all stages; builds with assertions check every index.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace keld {

/// Rows 1..n of T. Rows are signed numbers as they stand in other tables, so that an index needs no cast.
/// With assertions an index outside 1..n ends the program; without them operator[] is a plain access.
template <class T>
class Column {
 public:
  using value_type = T;
  using iterator = T*;
  using const_iterator = const T*;

  Column() = default;  // no rows
  Column(std::initializer_list<T> rows) : entries_(1) { entries_.insert(entries_.end(), rows); }
  explicit Column(std::int64_t rows, const T& value = T()) { assign(rows, value); }

  void assign(std::int64_t rows, const T& value) { entries_.assign(entriesFor(rows), value); }
  void resize(std::int64_t rows, const T& value = T()) { entries_.resize(entriesFor(rows), value); }
  void reserve(std::int64_t rows) { entries_.reserve(entriesFor(rows)); }
  void shrink_to_fit() { entries_.shrink_to_fit(); }
  void push_back(const T& value) {
    if (entries_.empty()) entries_.emplace_back();
    entries_.push_back(value);
  }

  int rows() const { return entries_.empty() ? 0 : static_cast<int>(entries_.size() - 1); }
  bool empty() const { return entries_.size() < 2; }

  T& operator[](std::int64_t row) { return entries_[checked(row)]; }
  const T& operator[](std::int64_t row) const { return entries_[checked(row)]; }
  T& back() { return (*this)[rows()]; }
  const T& back() const { return (*this)[rows()]; }

  iterator begin() { return entries_.data() + firstEntry(); }
  iterator end() { return entries_.data() + entries_.size(); }
  const_iterator begin() const { return entries_.data() + firstEntry(); }
  const_iterator end() const { return entries_.data() + entries_.size(); }

  /// Where entry 0 stands: row r is at origin() + r. For stretches of rows in inner loops and for long
  /// tables.
  T* origin() { return entries_.data(); }
  const T* origin() const { return entries_.data(); }

  bool operator==(const Column&) const = default;

 private:
  static std::size_t entriesFor(std::int64_t rows) {
    assert(rows >= 0);
    return static_cast<std::size_t>(rows) + 1;
  }
  std::size_t firstEntry() const { return entries_.empty() ? 0 : 1; }
  std::size_t checked(std::int64_t row) const {
    assert(row >= 1 && row < static_cast<std::int64_t>(entries_.size()));
    return static_cast<std::size_t>(row);
  }

  std::vector<T> entries_;  // [0..n], or empty
};

/// The same for a few rows, 1..n, that are always there.
template <class T, std::size_t n>
class FixedColumn {
 public:
  FixedColumn() = default;
  FixedColumn(std::initializer_list<T> firstRows) {
    assert(firstRows.size() <= n);
    std::copy(firstRows.begin(), firstRows.end(), entries_.begin() + 1);
  }
  T& operator[](std::int64_t row) { return entries_[checked(row)]; }
  const T& operator[](std::int64_t row) const { return entries_[checked(row)]; }
  bool operator==(const FixedColumn&) const = default;

 private:
  static std::size_t checked(std::int64_t row) {
    assert(row >= 1 && row <= static_cast<std::int64_t>(n));
    return static_cast<std::size_t>(row);
  }

  std::array<T, n + 1> entries_{};
};

}  // namespace keld
