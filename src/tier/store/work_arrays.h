// Growable 1-based work arrays with memory counters; every long vector of the solver is one.
// Freed by scope or by release(); a failed allocation ends the call with ierr 70 (growth: 60).
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "tier/store/context.h"

namespace tier {

/// Raw storage of `bytes` bytes, counted as integers or doubles; null on failure.
void* counted_allocate(std::size_t count, std::size_t size);
void counted_free(void* p, std::size_t count, std::size_t size);
/// Gives the end of the storage back; returns where it begins then, mostly `p`.
void* counted_shrink(void* p, std::size_t count, std::size_t fewer, std::size_t size);
[[noreturn]] void allocation_failed(const char* name, const char* routine);
[[noreturn]] void extension_failed(const char* name, const char* routine);

/// With the parameter trackmem, prints "<what> <name> in (routine)" with the size and the memory in use.
void track_allocation(const char* what, const char* name, const char* routine, std::int64_t n);

/// The number of elements of a view, kept where assertions check indices and no bytes else.
struct view_bound {
#ifdef NDEBUG
  explicit view_bound(std::int64_t) {}
  bool holds(std::int64_t) const { return true; }
#else
  explicit view_bound(std::int64_t elements) : n(elements) {}
  bool holds(std::int64_t i) const { return i >= 1 && i <= n; }
  std::int64_t n;
#endif
};

/// A 1-based view of somebody's array: p[1] .. p[n]. Assertions check an index from above where n is told.
template <class T>
class view {
 public:
  view() = default;
  explicit view(T* first, std::int64_t n = std::numeric_limits<std::int64_t>::max())
      : first_(first), bound_(n) {}
  T& operator[](std::int64_t i) const {
    assert(bound_.holds(i));
    return first_[i - 1];
  }
  T* data() const { return first_; }
  explicit operator bool() const { return first_ != nullptr; }
  operator view<const T>() const requires(!std::is_const_v<T>) { return view<const T>(first_, bound_); }

 private:
  template <class>
  friend class view;
  view(T* first, view_bound bound) : first_(first), bound_(bound) {}

  T* first_ = nullptr;
  [[no_unique_address]] view_bound bound_{0};
};

/// An owned 1-based array of plain numbers, not initialised by allocate().
template <class T>
class work_array {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  work_array() = default;
  work_array(const work_array&) = delete;
  work_array& operator=(const work_array&) = delete;
  work_array(work_array&& other) noexcept { swap(other); }
  work_array& operator=(work_array&& other) noexcept {
    release();
    swap(other);
    return *this;
  }
  ~work_array() { release(); }

  void swap(work_array& other) noexcept {
    std::swap(first_, other.first_);
    std::swap(size_, other.size_);
  }

  /// Takes n elements; what was held is used again if it has that size, else freed.
  void allocate(std::int64_t n, const char* name, const char* routine) {
    if (n == size_) return track_allocation("Keeping", name, routine, n);
    if (size_ > 0) track_allocation("De-allocation", name, routine, size_);
    release();
    if (n <= 0) return;
    first_ = static_cast<T*>(counted_allocate(static_cast<std::size_t>(n), sizeof(T)));
    if (!first_) allocation_failed(name, routine);
    size_ = n;
    track_allocation("Allocation", name, routine, n);
  }

  /// The same with every element set to `value`.
  void allocate(std::int64_t n, T value, const char* name, const char* routine) {
    allocate(n, name, routine);
    for (std::int64_t i = 0; i < size_; ++i) first_[i] = value;
  }

  /// Makes room for n elements and keeps the contents; shrinks when n is smaller. Views must be taken anew.
  void resize(std::int64_t n, const char* name, const char* routine) {
    if (n == size_) return;
    if (n <= 0) return release();
    if (n < size_) {
      first_ = static_cast<T*>(
          counted_shrink(first_, static_cast<std::size_t>(size_), static_cast<std::size_t>(n), sizeof(T)));
      size_ = n;
      return;
    }
    work_array grown;
    grown.first_ = static_cast<T*>(counted_allocate(static_cast<std::size_t>(n), sizeof(T)));
    if (!grown.first_) extension_failed(name, routine);
    grown.size_ = n;
    if (size_ > 0) std::memcpy(grown.first_, first_, static_cast<std::size_t>(size_) * sizeof(T));
    swap(grown);
  }

  void release() {
    if (first_) counted_free(first_, static_cast<std::size_t>(size_), sizeof(T));
    first_ = nullptr;
    size_ = 0;
  }

  std::int64_t size() const { return size_; }
  T& operator[](std::int64_t i) {
    assert(i >= 1 && i <= size_);
    return first_[i - 1];
  }
  const T& operator[](std::int64_t i) const {
    assert(i >= 1 && i <= size_);
    return first_[i - 1];
  }
  T* data() { return first_; }
  const T* data() const { return first_; }
  operator view<T>() { return view<T>(first_, size_); }
  operator view<const T>() const { return view<const T>(first_, size_); }

 private:
  T* first_ = nullptr;
  std::int64_t size_ = 0;
};

}  // namespace tier
