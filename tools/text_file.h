// A text file on its way to the disk: numbers are written without printf, in any locale with a decimal point.
// Used by the writers of the working files.
#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace part_maker {

/// Collects blocks of text and writes them; every failure throws std::runtime_error with the path.
class TextFile {
 public:
  explicit TextFile(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "wb")) {
    if (!file_) fail();
    text_.reserve(blockSize + 4096);
  }

  TextFile& operator<<(std::string_view words) {
    text_ += words;
    if (text_.size() >= blockSize) flush();
    return *this;
  }
  TextFile& operator<<(const char* words) { return *this << std::string_view(words); }
  TextFile& operator<<(long number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    return *this << std::string_view(digits, static_cast<std::size_t>(end.ptr - digits));
  }
  TextFile& operator<<(int number) { return *this << static_cast<long>(number); }

  /// A number rounded to `decimals` places, without trailing zeros.
  TextFile& fixed(double value, int decimals) {
    static constexpr std::array<double, 7> power{1.0, 10.0, 1e2, 1e3, 1e4, 1e5, 1e6};
    const long unit = static_cast<long>(power[static_cast<std::size_t>(decimals)]);
    const long scaled = std::lround(value * static_cast<double>(unit));
    if (scaled < 0) *this << "-";
    *this << std::abs(scaled) / unit;
    long rest = std::abs(scaled) % unit;
    if (rest == 0) return *this;
    char digits[8] = ".";
    int last = 0;
    for (int k = decimals; k > 0; --k, rest /= 10) {
      digits[k] = static_cast<char>('0' + rest % 10);
      if (last == 0 && digits[k] != '0') last = k;
    }
    return *this << std::string_view(digits, static_cast<std::size_t>(last) + 1);
  }

  /// A number in the shortest form that reads back as itself.
  TextFile& operator<<(double value) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value);
    return *this << std::string_view(digits, static_cast<std::size_t>(end.ptr - digits));
  }

  void close() {
    flush();
    if (std::fclose(file_.release()) != 0) fail();
  }

 private:
  static constexpr std::size_t blockSize = 1 << 20;
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void flush() {
    if (std::fwrite(text_.data(), 1, text_.size(), file_.get()) != text_.size()) fail();
    text_.clear();
  }
  [[noreturn]] void fail() const { throw std::runtime_error("cannot write " + path_); }

  std::string path_, text_;
  std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace part_maker
