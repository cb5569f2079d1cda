// Labels and units of the value lines: the installation's string table (16-bit text) and unit table.
// Parsed once per run; called by vReadValueLine.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace keld {

/// Lines of the section "[Language= ENGLISH]" and all behind it, in UTF-8, with an index over their numbers.
class StringTable {
 public:
  struct Record {
    int unit = 0;          // unit number: the second integer read last at this line
    std::size_t line = 0;  // place in the section
    std::string label;     // the line without its leading blanks and digits
  };

  /// `bytes` are those of the file, UTF-16 little endian with or without a byte order mark; a table without
  /// the section ends the run.
  static StringTable parse(std::string_view bytes, const std::string& name);

  /// The first line whose first integer is `number`; nullptr when the table ends without one. A line that
  /// doesn't parse leaves the numbers of the lines before it in place.
  const Record* find(int number) const;

  /// The lines behind a record, for the title blocks.
  std::span<const std::string> linesBehind(const Record& record) const;

 private:
  std::vector<std::string> lines_;
  std::unordered_map<int, Record> records_;
};

/// Units of the section "[Unit= Metrics]": the text from the ninth character of each line on.
class UnitTable {
 public:
  /// A table without the section ends the run.
  static UnitTable parse(std::string text, const std::string& name);

  /// At most 50 characters, up to the third blank; empty for an unknown number.
  std::string_view find(int number) const;

 private:
  std::unordered_map<int, std::string> units_;
};

struct LabelTables {
  StringTable strings;
  UnitTable units;
};

/// The tables of the installation, read at the first call; a missing or unreadable one ends the run.
const LabelTables& labelTables();

/// Takes other tables in place of the files (fuzz targets), or forgets the ones that were read.
void setLabelTables(LabelTables tables);
void forgetLabelTables();

/// UTF-8 of UTF-16 little endian; what is no character becomes U+FFFD, an odd last byte is dropped.
std::string utf8FromUtf16(std::string_view bytes);

}  // namespace keld
