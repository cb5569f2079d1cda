// The bytes of a fuzz target as choices, shared by the targets that make problems of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <random>
#include <span>

namespace fuzz {

inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "a promise is broken: %s\n", what);
  std::abort();
}

/// Bytes as choices; numbers made from them when they are used up, so that short inputs reach far.
class choices {
 public:
  choices(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {
    std::seed_seq seed(data, data + size);
    further_.seed(seed);
  }
  int below(int limit) {
    const auto number = next_ < bytes_.size() ? bytes_[next_++] : further_();
    return static_cast<int>(number % static_cast<unsigned>(limit));
  }
  template <class T>
  T of(std::initializer_list<T> values) {
    return values.begin()[below(static_cast<int>(values.size()))];
  }
  bool seldom() { return below(16) == 1; }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t next_ = 0;
  std::minstd_rand further_;
};

}  // namespace fuzz
