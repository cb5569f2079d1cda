// String and unit table of the installation.
// Called by vReadValueLine.
#include "run/base/labels.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "run/base/failure.h"
#include "run/base/text_reader.h"
#include "run/base/working_files.h"

namespace keld {
namespace {

constexpr std::string_view languageTag = "[Language= ENGLISH]";
constexpr std::string_view unitTag = "[Unit= Metrics]";
constexpr std::size_t unitColumn = 8;  // the ninth character
constexpr std::size_t longestUnit = 50;
constexpr int blanksOfUnit = 3;  // the third one ends it

std::optional<LabelTables> tables;

void appendUtf8(std::string& text, std::uint32_t code) {
  const auto byte = [&text](std::uint32_t value) { text += static_cast<char>(value); };
  if (code < 0x80) {
    byte(code);
  } else if (code < 0x800) {
    byte(0xC0 | code >> 6);
    byte(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    byte(0xE0 | code >> 12);
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  } else {
    byte(0xF0 | code >> 18);
    byte(0x80 | (code >> 12 & 0x3F));
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  }
}

std::string_view unitTextOf(std::string_view line) {
  if (line.size() <= unitColumn) return {};
  line = line.substr(unitColumn, longestUnit);
  int blanks = 0;
  for (std::size_t i = 0; i < line.size(); ++i)
    if (line[i] == ' ' && ++blanks == blanksOfUnit) return line.substr(0, i);
  return line;
}

/// Passes over the lines up to the one that contains `tag`.
void needLineWith(TextReader& file, std::string_view tag, const char* hint) {
  while (const auto line = file.line())
    if (line->find(tag) != std::string_view::npos) return;
  file.fault("a line with " + std::string(tag) + hint);
}

std::string fileBytes(const std::string& path, const char* what) {
  if (!fileReadable(path))
    vFail(
        "\n !! Error !!  Cannot open the %s %s: is the folder before "
        "2@ the installation, with a separator at its end?\n",
        what, path.c_str());
  return TextReader::readWhole(path);
}

}  // namespace

std::string utf8FromUtf16(std::string_view bytes) {
  constexpr std::uint32_t replacement = 0xFFFD;
  const auto unitAt = [bytes](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
  };
  std::string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    std::uint32_t code = unitAt(i);
    const bool high = code >= 0xD800 && code < 0xDC00;
    if (high && i + 3 < bytes.size() && unitAt(i + 2) >= 0xDC00 && unitAt(i + 2) < 0xE000) {
      code = 0x10000 + ((code - 0xD800) << 10) + (unitAt(i + 2) - 0xDC00);
      i += 2;
    } else if (code >= 0xD800 && code < 0xE000) {
      code = replacement;
    }
    appendUtf8(text, code);
  }
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return text;
}

StringTable StringTable::parse(std::string_view bytes, const std::string& name) {
  StringTable table;
  TextReader file = TextReader::fromText(utf8FromUtf16(bytes), name);
  needLineWith(file, languageTag, " (16-bit text, little endian)");
  int number = 0, unit = 0;
  while (const auto line = file.line()) {
    table.lines_.emplace_back(*line);
    TextReader fields = TextReader::fromText(std::string(*line), name);
    const auto first = fields.readInt();
    if (!first) continue;
    number = *first;
    if (const auto second = fields.readInt()) unit = *second;
    const std::size_t textStart = line->find_first_not_of(" 0123456789");
    table.records_.try_emplace(
        number,
        Record{unit, table.lines_.size() - 1,
               textStart == std::string_view::npos ? std::string() : std::string(line->substr(textStart))});
  }
  return table;
}

const StringTable::Record* StringTable::find(int number) const {
  const auto found = records_.find(number);
  return found == records_.end() ? nullptr : &found->second;
}

std::span<const std::string> StringTable::linesBehind(const Record& record) const {
  return std::span(lines_).subspan(record.line + 1);
}

UnitTable UnitTable::parse(std::string text, const std::string& name) {
  UnitTable table;
  TextReader file = TextReader::fromText(std::move(text), name);
  needLineWith(file, unitTag, "");
  while (const auto line = file.line()) {
    TextReader fields = TextReader::fromText(std::string(*line), name);
    if (const auto number = fields.readInt()) table.units_.try_emplace(*number, unitTextOf(*line));
  }
  return table;
}

std::string_view UnitTable::find(int number) const {
  const auto found = units_.find(number);
  return found == units_.end() ? std::string_view() : found->second;
}

const LabelTables& labelTables() {
  if (!tables) {
    const std::string& strings = workingFiles.stringTable;
    const std::string& units = workingFiles.unitTable;
    StringTable stringTable = StringTable::parse(fileBytes(strings, "string table"), strings);
    tables = LabelTables{std::move(stringTable), UnitTable::parse(fileBytes(units, "unit table"), units)};
  }
  return *tables;
}

void setLabelTables(LabelTables other) { tables = std::move(other); }
void forgetLabelTables() { tables.reset(); }

}  // namespace keld
