// Implementation of TextReader: one read of the file, numbers by std::from_chars.
// Called by every reader.
#include "run/base/text_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "run/base/failure.h"

namespace keld {
namespace {

constexpr std::size_t shownCharacters = 40;  // of the text that a fault quotes

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

class FileDescriptor {
 public:
  explicit FileDescriptor(const std::string& path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  int get() const { return fd_; }

 private:
  int fd_;
};

[[noreturn]] void readFault(const std::string& path) {
  const int reason = errno;
  vFail("\n !! Error !!  Cannot read the file %s: %s\n", path.c_str(),
        std::generic_category().message(reason).c_str());
}

void dropCarriageReturns(std::string& text) {
  std::size_t to = text.find("\r\n");
  if (to == std::string::npos) return;
  for (std::size_t from = to; from < text.size(); ++from) {
    if (text[from] == '\r' && from + 1 < text.size() && text[from + 1] == '\n') continue;
    text[to++] = text[from];
  }
  text.resize(to);
}

}  // namespace

std::string TextReader::readWhole(const std::string& path) {
  const FileDescriptor file(path);
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) readFault(path);

  std::string text(static_cast<std::size_t>(std::max<off_t>(status.st_size, 0)) + 1, '\0');
  std::size_t filled = 0;
  for (;;) {  // one read for a regular file, and one more that finds its end
    const ssize_t got = ::read(file.get(), text.data() + filled, text.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) readFault(path);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
    if (filled == text.size()) text.resize(2 * text.size());  // the file grows, or tells no size
  }
  text.resize(filled);
  return text;
}

TextReader TextReader::open(const std::string& path) { return fromText(readWhole(path), path); }

TextReader TextReader::fromText(std::string text, std::string name) {
  TextReader reader;
  reader.text_ = std::move(text);
  reader.name_ = std::move(name);
  dropCarriageReturns(reader.text_);
  return reader;
}

long TextReader::lineNumber() const {
  return 1 + std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(position_), '\n');
}

void TextReader::skipBlanks() {
  while (position_ < text_.size() && isBlank(text_[position_])) ++position_;
}

void TextReader::skipLine() { through('\n'); }

std::string_view TextReader::through(char last) {
  const std::size_t start = position_;
  const std::size_t found = text_.find(last, position_);
  position_ = found == std::string::npos ? text_.size() : found + 1;
  return std::string_view(text_).substr(start, position_ - start);
}

std::optional<std::string_view> TextReader::line() {
  if (atEnd()) return std::nullopt;
  std::string_view text = through('\n');
  if (text.ends_with('\n')) text.remove_suffix(1);
  return text;
}

void TextReader::needLineStartingWith(std::string_view tag) {
  while (const auto text = line())
    if (text->starts_with(tag)) return;
  fault("a line that starts with " + std::string(tag));
}

bool TextReader::onlyBlanksBeforeLineEnd() const {
  const std::size_t end = std::min(text_.find('\n', position_), text_.size());
  return std::all_of(text_.begin() + static_cast<std::ptrdiff_t>(position_),
                     text_.begin() + static_cast<std::ptrdiff_t>(end), isBlank);
}

bool TextReader::integerAhead() {
  skipBlanks();
  const std::size_t digit = position_ + (peek() == '-' || peek() == '+' ? 1 : 0);
  return digit < text_.size() && text_[digit] >= '0' && text_[digit] <= '9';
}

std::optional<int> TextReader::readInt(int width) {
  skipBlanks();
  const char* first = text_.data() + position_;
  const char* end = text_.data() + text_.size();
  if (width > 0 && end - first > width) end = first + width;
  const bool plus = first != end && *first == '+';
  if (plus && first + 1 != end && first[1] == '-') return std::nullopt;
  int value = 0;
  const auto [stop, error] = std::from_chars(first + (plus ? 1 : 0), end, value);
  if (error != std::errc()) return std::nullopt;
  position_ = static_cast<std::size_t>(stop - text_.data());
  return value;
}

std::optional<double> TextReader::readDouble() {
  skipBlanks();
  const char* first = text_.data() + position_;
  const char* end = text_.data() + text_.size();
  if (first != end && *first == '+') {
    ++first;
    if (first != end && *first == '-') return std::nullopt;
  }
  double value = 0.0;
  const auto [stop, error] = std::from_chars(first, end, value);
  const std::size_t stopAt = static_cast<std::size_t>(stop - text_.data());
  if (error == std::errc::result_out_of_range) return outOfRangeDouble(stopAt);
  if (error != std::errc()) return std::nullopt;
  position_ = stopAt;
  return value;
}

// Too large reads as infinity, too small as the nearest number, as scanf has it.
std::optional<double> TextReader::outOfRangeDouble(std::size_t end) {
  const double value = std::strtod(text_.substr(position_, end - position_).c_str(), nullptr);
  position_ = end;
  return value;
}

bool TextReader::atTokenEnd() const { return atEnd() || isBlank(text_[position_]); }

/// Whether a digit stands behind a second point, a comma or the letter of an exponent.
bool TextReader::numberGoesOn() const {
  std::size_t next = position_;
  const auto takeOneOf = [&](std::string_view characters) {
    const bool there = next < text_.size() && characters.find(text_[next]) != std::string_view::npos;
    next += there;
    return there;
  };
  if (takeOneOf("eEdD"))
    takeOneOf("+-");
  else if (!takeOneOf(".,"))
    return false;
  return takeOneOf("0123456789");
}

double TextReader::needLeadingDouble(const std::string& expected) {
  skipBlanks();
  const std::size_t start = position_;
  const auto value = readDouble();
  if (value && std::isfinite(*value) && !numberGoesOn()) return *value;
  position_ = start;
  fault(expected);
}

int TextReader::needInt(const char* what, long record) {
  skipBlanks();
  const std::size_t start = position_;
  const auto value = readInt();
  if (!value || !atTokenEnd()) faultAt(start, "an integer", what, record);
  return *value;
}

int TextReader::needIntInRange(int first, int last, const char* what, long record) {
  skipBlanks();
  const std::size_t start = position_;
  const int value = needInt(what, record);
  if (value < first || value > last) {
    const std::string range = "an integer from " + std::to_string(first) + " to " + std::to_string(last);
    faultAt(start, range.c_str(), what, record);
  }
  return value;
}

double TextReader::needDouble(const char* what, long record) {
  skipBlanks();
  const std::size_t start = position_;
  const auto value = readDouble();
  if (!value || !std::isfinite(*value) || !atTokenEnd()) faultAt(start, "a finite number", what, record);
  return *value;
}

void TextReader::faultAt(std::size_t position, const char* kind, const char* what, long record) {
  position_ = position;
  std::string expected = std::string(kind) + " (" + what;
  if (record > 0) expected += " of record " + std::to_string(record);
  fault(expected + ")");
}

void TextReader::fault(const std::string& expected) const {
  std::string found = "the end of the file";
  if (!atEnd()) {
    const std::size_t end = std::min(text_.find('\n', position_), position_ + shownCharacters);
    found = text_.substr(position_, end - position_);
    for (char& c : found)
      if (static_cast<unsigned char>(c) < ' ' || c == 127) c = '?';
    found = found.empty() ? "the end of the line" : "\"" + found + "\"";
  }
  refuse("expected " + expected + ", found " + found);
}

void TextReader::refuse(const std::string& words) const {
  vFail("\n !! Error !!  %s, line %ld: %s%s%s\n", name_.c_str(), lineNumber(), words.c_str(),
        hasNote() ? "; " : "", note_.c_str());
}

}  // namespace keld
