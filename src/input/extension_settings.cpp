// Reader of KELD's own choices in ".CPU"; see the header.
#include "input/extension_settings.h"

#include <array>
#include <cstdio>
#include <string>

#include "input/process_record.h"
#include "run/base/labels.h"
#include "run/base/reading.h"
#include "run/base/streams.h"

namespace keld {
namespace {

bool findSection(TextReader& file) {
  file.moveTo(0);
  while (const auto line = file.line())
    if (line->starts_with("[Keld_Extension]")) return true;
  return false;
}

/// Whether a value line stands at the cursor, behind blank lines; another section or the end doesn't count.
bool valueLineAhead(TextReader& file) {
  file.skipBlanks();
  if (file.atEnd() || file.peek() == '[') return false;
  const std::size_t start = file.position();
  const auto line = file.line();
  file.moveTo(start);
  return line && line->find('=') != std::string_view::npos;
}

/// The value of the line at the cursor. Unlike other value lines it is taken whether or not the string table
/// knows its number: the table of an older installation doesn't.
double valueOfLine(TextReader& file, const char* what) {
  const std::size_t start = file.position();
  vSkipPastEquals(file);
  const int number = file.readInt().value_or(0);
  if (labelTables().strings.find(number) != nullptr) {
    file.moveTo(start);
    vReadValueLine(file, ValueUse::used);
  } else {
    vSkipPastEquals(file);
    file.readInt();
    vSkipPastEquals(file);
    LastValue = file.needLeadingDouble("a finite number as the value of " + std::string(what));
    file.skipLine();
    vPrintMessage(-3, "\n   %s      = %4.2le ", what, LastValue);
  }
  vPrintMessage(-2, "\n");
  return LastValue;
}

/// One of the choices 1 to `choices`; `words` lists them for the message. `absent` where the line is missing.
int choiceOfLine(TextReader& file, const char* what, int choices, const char* words, int absent) {
  if (!valueLineAhead(file)) return absent;
  const std::size_t start = file.position();
  const double value = valueOfLine(file, what);
  for (int choice = 1; choice <= choices; ++choice)
    if (value == choice) return choice;
  file.moveTo(start);  // the message names this line
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%g", value);
  file.refuse(std::string(what) + " of section [Keld_Extension] is " + digits.data() + ": expected " + words);
}

}  // namespace

void readExtensionSettings(TextReader& file) {
  if (!findSection(file)) return;
  file.skipLine();
  file.skipLine();
  vPrintMessage(-2, "\n\n");
  ProcessRecord& record = processRecord;
  record.extensionGiven = true;
  record.wallModel = choiceOfLine(file, "wall model", 2, "1 (wedge) or 2 (facet)", wedge_walls);  // 1
  record.solverRoad =                                                                             // 2
      choiceOfLine(file, "solver", 3, "1 (as value 2 says), 2 (aggregation) or 3 (automatic)",
                   road_as_chosen);
}

}  // namespace keld
