// Reading of text inputs: a file held in memory and a cursor over it that reads tokens as scanf does, and the
// shared tools that every reader uses. Called by all readers of src/input and src/model.
#pragma once

#include <optional>
#include <string>
#include <string_view>

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

  const std::string& name() const { return name_; }
  int lineNumber() const;  // line of the cursor from 1, counted when asked for
  bool atEnd() const { return position_ >= text_.size(); }

  int peek() const;                        // next character or -1 at the end
  int get();                               // the same, consumed
  void skipBlanks();                       // white space, line feeds included
  void skipLine();                         // up to and including the next line feed
  std::optional<std::string_view> line();  // next line without its end; nothing at the end of the file

  /// Tokens as scanf reads them: white space skipped, then as many characters as form a number. Nothing when
  /// none stands there (the cursor is then behind the white space only).
  std::optional<int> readInt(int width = 0);
  std::optional<double> readDouble();  // also reads inf and nan, which callers refuse by `need...`

  /// The same, but a missing, non-finite or out-of-range number ends the run with a message:
  /// file, line, what stood there and what was expected, e.g. needInt("element number of element record 17").
  int needInt(const char* what, long record = 0);
  double needDouble(const char* what, long record = 0);

  /// Ends the run: "... file <name>, line <n>: <expected>, found <text>".
  [[noreturn]] void fault(const std::string& expected) const;

 private:
  std::string text_, name_;
  std::size_t position_ = 0;
};

/// Reads characters up to and including the first "=" and then one more.
void vSkipPastEquals(TextReader& file);

/// mode > 0: "<br>", then characters through "="; mode <= 0: through the line feed. |mode| of 1 or 2 copies
/// each character read, terminator included, to the open report; 0 skips silently.
void vEchoThrough(TextReader& file, int mode);

/// Reads lines until one contains "*/" and requires one "/*"; otherwise the title-format error ends the run.
void vCheckTitleBlock(TextReader& file);

/// The value that vReadValueLine read last. It keeps its former value where a rule says so.
extern double LastValue;

/// Reads one labelled value line (free text = string number, free text = flag, free text = value), echoes
/// label, value and unit into the open report. Returns 1, or 0 for an unknown string number above 30000. With
/// `used` set, text or a non-finite number in place of the value ends the run; otherwise LastValue stays.
int vReadValueLine(TextReader& file, bool used);

}  // namespace keld
