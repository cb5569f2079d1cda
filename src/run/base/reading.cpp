// Shared tools of the text inputs.
// Called by all readers of src/input and src/model.
#include "run/base/reading.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "run/base/failure.h"
#include "run/base/labels.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

double LastValue = 0.0;

namespace {

constexpr int firstTitleNumber = 50001;  // string numbers from here on stand for title blocks
constexpr int lastSilentNumber = 30000;  // unknown numbers up to here pass without a word

int lastStringNumber = 0;

struct TitleMarks {
  bool opened = false, closed = false;
  /// Takes a line in; returns whether it closes the block.
  bool takes(std::string_view line) {
    opened |= line.find("/*") != std::string_view::npos;
    closed |= line.find("*/") != std::string_view::npos;
    return closed;
  }
};

/// The line of old that the console alone shows, and one that names the place.
[[noreturn]] void titleFormatError(const std::string& place) {
  std::fputs("\n\n#####( !! Error !! in title format  )#####\n\n", stdout);
  vFail("\n !! Error !!  %s: expected a title block, which begins with \"/*\" and ends with \"*/\"\n",
        place.c_str());
}

/// Copies the title block behind the record to the report.
void echoTitleBlock(const StringTable& strings, const StringTable::Record& record) {
  TitleMarks marks;
  for (const std::string& line : strings.linesBehind(record)) {
    vWriteReport("<br>");
    vWriteReport(line);
    vWriteReport("\n");
    if (marks.takes(line)) break;
  }
  if (!marks.opened || !marks.closed)
    titleFormatError(workingFiles.stringTable + ", behind string number " + std::to_string(lastStringNumber));
  LastValue = -1.0;
}

void requireMore(const TextReader& file) {
  if (file.atEnd()) file.fault("a value line: text = string number, text = flag, text = value");
}

void readStringNumber(TextReader& file, ValueUse use) {
  vSkipPastEquals(file);
  requireMore(file);
  if (const auto number = file.readInt())
    lastStringNumber = *number;
  else if (use == ValueUse::used || file.atEnd())
    file.fault("a string number behind the first \"=\" of a value line");
}

void readValue(TextReader& file, ValueUse use) {
  vSkipPastEquals(file);
  requireMore(file);
  file.readInt();  // the flag is dropped
  vSkipPastEquals(file);
  const std::string expected =
      "a finite number as the value of string number " + std::to_string(lastStringNumber);
  if (use == ValueUse::used)
    LastValue = file.needLeadingDouble(expected);
  else if (const auto value = file.readDouble())
    LastValue = *value;
  else if (file.atEnd())
    file.fault(expected);
  file.skipLine();
}

}  // namespace

void vSkipPastEquals(TextReader& file) {
  file.through('=');
  file.get();
}

void vEchoThrough(TextReader& file, int mode) {
  if (mode > 0) vWriteReport("<br>");
  const std::string_view text = file.through(mode > 0 ? '=' : '\n');
  if (mode == 1 || mode == 2 || mode == -1 || mode == -2) vWriteReport(text);
}

void vCheckTitleBlock(TextReader& file) {
  TitleMarks marks;
  while (const auto line = file.line())
    if (marks.takes(*line)) break;
  if (!marks.opened || !marks.closed)
    titleFormatError(file.name() + ", line " + std::to_string(file.lineNumber()));
}

int vReadValueLine(TextReader& file, ValueUse use) {
  readStringNumber(file, use);
  vWriteReport("<br>\n");
  const LabelTables& tables = labelTables();
  const StringTable::Record* record = tables.strings.find(lastStringNumber);

  int found = 1;
  if (!record) requireMore(file);
  if (!record && lastStringNumber > lastSilentNumber) {
    vPrintMessage(1, "\n   >>> !! Warning !! <<<  There is inconsistent %d string detected.\n",
                  lastStringNumber);
    found = 0;
  } else if (!record) {
    file.skipLine();
  } else if (lastStringNumber >= firstTitleNumber) {
    echoTitleBlock(tables.strings, *record);
  } else {
    readValue(file, use);
    vPrintMessage(-2, "   %s", record->label.c_str());
    vPrintMessage(-2, "      = %4.2le ", LastValue);
    vWriteReport(tables.units.find(record->unit));
  }
  if (use == ValueUse::used && !std::isfinite(LastValue))
    file.refuse("string number " + std::to_string(lastStringNumber) +
                " is not in the string table, and the value before it, which stands in, is not finite");
  return found;
}

int lastValueAsInt(const TextReader& file, const char* what) {
  if (!(std::abs(LastValue) < 2147483648.0))
    file.refuse("the value before this line (" + std::string(what) + ") is beyond the range of an integer");
  return static_cast<int>(LastValue);
}

}  // namespace keld
