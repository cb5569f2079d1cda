// Reading of ".PRC": fifteen values of the filling and packing stage, then the ambient temperature.
// Called by the input stage.
#include "input/process_file.h"

#include <array>

#include "input/input_echo.h"
#include "input/process_record.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/reading.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

ProcessRecord processRecord;

namespace {

constexpr char fahrenheit[] = " (%6.2le oF)\n";

void echoFahrenheit() { vPrintMessage(-2, fahrenheit, LastValue * 1.8 + 32.0); }
void echoPsi() { vPrintMessage(-2, " (%6.2le psi)\n", LastValue * 145.07); }
void echoOunces() { vPrintMessage(-2, " (%6.2le Ounces/sec)\n", LastValue * 0.033814); }
void echoNothing() { vPrintMessage(-2, "\n"); }

void echoedLine(TextReader& file, void (*echo)()) {
  vReadValueLine(file, ValueUse::echoed);
  echo();
}

double temperatureLine(TextReader& file) {
  vReadValueLine(file, ValueUse::used);
  echoFahrenheit();
  return LastValue + kelvinOfZeroCelsius;
}

int integerLine(TextReader& file, const char* what) {
  vReadValueLine(file, ValueUse::used);
  echoNothing();
  return lastValueAsInt(file, what);
}

void fillerLines(TextReader& file) {
  processRecord.fillerPresent = integerLine(file, "filler present");
  processRecord.fractionKind = integerLine(file, "kind of percentage");
  vReadValueLine(file, ValueUse::used);
  echoNothing();
  const double fraction = processRecord.fillerPresent == 1 ? LastValue / 100.0 : 0.0;
  const bool byWeight = processRecord.fractionKind == 1;
  processRecord.fillerWeightFraction = byWeight ? fraction : 0.0;
  processRecord.fillerVolumeFraction = byWeight ? 0.0 : fraction;
}

}  // namespace

void readProcessConditions(TextReader& file) {
  file.needLineStartingWith("[Flpk_ProcessData]");
  vPrintMessage(-2, "\n");
  echoedLine(file, echoNothing);                             // 1
  processRecord.meltTemperature[1] = temperatureLine(file);  // 2
  echoedLine(file, echoFahrenheit);                          // 3
  echoedLine(file, echoPsi);                                 // 4
  echoedLine(file, echoOunces);                              // 5
  for (int i = 6; i <= 10; ++i) echoedLine(file, echoNothing);
  fillerLines(file);                                                     // 11 to 13
  processRecord.secondKind = integerLine(file, "two kinds of polymer");  // 14
  processRecord.meltTemperature[2] = temperatureLine(file);              // 15

  file.needLineStartingWith("[Keld_ProcessData]");
  vPrintMessage(-2, "\n\n");
  processRecord.ambientTemperature = temperatureLine(file);
}

void readProcessFile() {
  vPrintMessage(2, "<br>\n");
  echoHeading("\n # Process information ......       \n");
  vPrintMessage(2, "<br>\n");
  if (!waitForFile(workingFiles.prc)) vFail(message::D1005);
  TextReader file = TextReader::open(workingFiles.prc);
  const ReportSection section;
  readProcessConditions(file);
}

}  // namespace keld
