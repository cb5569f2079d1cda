// A text file held in memory and a cursor over it that reads tokens as scanf does.
// Every input of a run is read through it: src/input, the label tables, model processing.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace keld {

/// A text file, read once as a whole, with a cursor. Line ends are LF or CR LF; a CR before LF is no
/// character. Numbers are read by std::from_chars: decimal point whatever the locale, a leading "+" accepted.
class TextReader {
 public:
  /// Reads the file; the caller has made sure that it can be opened (see waitForFile); a failure of the read
  /// itself ends the run with a message that names the file.
  static TextReader open(const std::string& path);
  /// Reads from memory, as the fuzz targets and tests do. `name` stands in messages.
  static TextReader fromText(std::string text, std::string name);

  /// The bytes of a file; a failure of the read ends the run with a message that names the file.
  static std::string readWhole(const std::string& path);

  const std::string& name() const { return name_; }
  long lineNumber() const;  // line of the cursor from 1, counted when asked for
  bool atEnd() const { return position_ >= text_.size(); }
  std::size_t remaining() const { return text_.size() - position_; }
  std::size_t position() const { return position_; }
  void moveTo(std::size_t position) { position_ = position; }  // 0, or a place where the cursor was

  /// Next character or -1 at the end; get() consumes it.
  int peek() const { return atEnd() ? -1 : static_cast<unsigned char>(text_[position_]); }
  int get() { return atEnd() ? -1 : static_cast<unsigned char>(text_[position_++]); }
  void skipBlanks();                       // white space, line feeds included
  void skipLine();                         // up to and including the next line feed
  std::optional<std::string_view> line();  // next line without its end; nothing at the end of the file
  std::string_view through(char last);     // up to and including `last`, or to the end of the file

  /// Reads lines up to and including the first that starts with `tag`; a missing tag ends the run.
  void needLineStartingWith(std::string_view tag);

  /// Whether an integer begins behind the white space, which is skipped.
  bool integerAhead();

  /// Tokens as scanf reads them: white space skipped, then as many characters as form a number. Nothing when
  /// none stands there or an integer overflows (the cursor is then behind the white space only).
  std::optional<int> readInt(int width = 0);  // width > 0: at most so many characters
  std::optional<double> readDouble();         // also reads inf and nan, which needDouble refuses

  /// readDouble where other words may follow the number: finite, and not cut short within a number that is
  /// written another way ("7,5", "1.2D3"). Otherwise the run ends: file,
  /// line, `expected` and what stood there.
  double needLeadingDouble(const std::string& expected);

  /// A whole token, which ends at white space or the end of the file. Anything else, a missing, overflowing
  /// or non-finite number ends the run: file, line, what was expected and what stood there. With record > 0
  /// the message says "<what> of record <record>".
  int needInt(const char* what, long record = 0);
  double needDouble(const char* what, long record = 0);
  /// needInt within first..last.
  int needIntInRange(int first, int last, const char* what, long record = 0);

  /// Whether blanks alone stand between the cursor and the end of its line.
  bool onlyBlanksBeforeLineEnd() const;

  /// Words that every later fault ends with: what has gone wrong before, and shows later.
  void noteForFaults(std::string words) { note_ = std::move(words); }
  bool hasNote() const { return !note_.empty(); }

  /// Ends the run: "<name>, line <n>: expected <expected>, found <text at the cursor>".
  [[noreturn]] void fault(const std::string& expected) const;
  /// Ends the run: "<name>, line <n>: <words>".
  [[noreturn]] void refuse(const std::string& words) const;

 private:
  std::optional<double> outOfRangeDouble(std::size_t end);
  bool atTokenEnd() const;
  bool numberGoesOn() const;
  [[noreturn]] void faultAt(std::size_t position, const char* kind, const char* what, long record);

  std::string text_, name_, note_;
  std::size_t position_ = 0;
};

}  // namespace keld
