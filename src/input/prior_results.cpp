// Reading of ".RS1", ".PT1" and ".CT1" into fields by compact part element.
// Called by readPriorResults.
#include "input/prior_results.h"

#include <cmath>
#include <string>

#include "input/mesh_tables.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/reading.h"
#include "run/base/streams.h"
#include "run/base/vector3.h"
#include "run/base/working_files.h"

namespace keld {

ResidualStressField residualStressField;
ElementTemperatureField elementTemperatureField;
int residualStressValid = 1;
int temperatureFromCool = 0;

namespace {

constexpr double shortestDirection = 0.98, longestDirection = 1.02;
constexpr double largestCosine = 0.02;

/// The report is open around the check, so that its failure has a valid handle.
void checkTitle(TextReader& file) {
  const ReportSection section;
  vCheckTitleBlock(file);
}

Direction readDirection(TextReader& file, const char* what, long record) {
  const double x = file.needDouble(what, record);
  const double y = file.needDouble(what, record);
  const double z = file.needDouble(what, record);
  return {x, y, z};
}

/// Divides by the length, which it returns.
double normalise(Direction& d) {
  const double length = norm(d);
  for (double& component : d) component /= length;
  return length;
}

struct StressRecord {
  double stress1 = 0.0, stress2 = 0.0, kindFraction = 0.0, orientationValue = 0.0;
  Direction direction1{}, direction2{}, direction3{};
};

StressRecord readStressRecord(TextReader& file, long record) {
  StressRecord s;
  s.stress1 = file.needDouble("first stress", record);
  s.stress2 = file.needDouble("second stress", record);
  if (!file.readInt(2))
    file.fault("an integer of two columns at most (third field of record " + std::to_string(record) + ")");
  s.kindFraction = file.needDouble("kind fraction", record);
  s.orientationValue = file.needDouble("orientation value", record);
  s.direction1 = readDirection(file, "first direction", record);
  s.direction2 = readDirection(file, "second direction", record);
  s.direction3 = readDirection(file, "third direction", record);
  return s;
}

/// Normalises the directions and tells whether they were orthonormal within the tolerances.
bool normaliseDirections(StressRecord& s) {
  const auto unit = [](double length) { return length >= shortestDirection && length <= longestDirection; };
  const double la = normalise(s.direction1), lb = normalise(s.direction2), lc = normalise(s.direction3);
  return unit(la) && unit(lb) && unit(lc) && std::abs(dot(s.direction1, s.direction2)) <= largestCosine &&
         std::abs(dot(s.direction2, s.direction3)) <= largestCosine &&
         std::abs(dot(s.direction1, s.direction3)) <= largestCosine;
}

void storeStress(const StressRecord& s, int element) {
  ResidualStressField& f = residualStressField;
  f.stress1[element] = s.stress1;
  f.stress2[element] = s.stress2;
  f.kindFraction[element] = s.kindFraction;
  f.orientationValue[element] = s.orientationValue;
  f.direction1[element] = s.direction1;
  f.direction2[element] = s.direction2;
  f.direction3[element] = s.direction3;
}

/// The element number that begins a record; 0 where none can be read, which ends the file.
int nextElement(TextReader& file, long record) {
  if (!file.integerAhead()) return 0;
  return file.needIntInRange(1, elementTable.elementCount, "number of the element", record);
}

int partElements() { return elementTable.partElementCount; }

/// A file of the right length must name every part element.
void requireAllElements(const TextReader& file, int named, const char* what) {
  if (named < partElements())
    file.refuse("the records give " + std::string(what) + " for " + std::to_string(named) + " of " +
                std::to_string(partElements()) + " part elements; some element numbers stand twice");
}

/// Walks the records of a temperature file; `sides` reads the fields of one.
template <class IsRunner, class ReadSides>
RecordCheck readTemperatures(TextReader& file, IsRunner isRunner, ReadSides readSides) {
  checkTitle(file);
  RecordCheck check;
  int element = 0;
  while (const int number = nextElement(file, check.records + 1)) {
    ++check.records;
    const auto [side1, side2] = readSides(check.records);
    if (isRunner(number) || ++element > partElements()) continue;
    elementTemperatureField.sideTemperature1[element] = side1 + kelvinOfZeroCelsius;
    elementTemperatureField.sideTemperature2[element] = side2 + kelvinOfZeroCelsius;
  }
  if (check.consistent())
    requireAllElements(file, element, "temperatures");
  else
    setAmbientTemperature();
  return check;
}

struct Sides {
  double side1, side2;
};

}  // namespace

bool RecordCheck::consistent() const { return records == elementTable.elementCount; }

void checkWorkingFiles() {
  vPrintMessage(1, "%s",
                ModelKind == 1 ? "\n @@@   Shell KELD Analysis V2017   @@@    \n"
                               : "\n @@@   Surface KELD Analysis V2017   @@@         \n");
  vPrintMessage(0, "\n # Check if working files exist or not ......         \n");
  const WorkingFileSet& set = workingFiles;
  if (fileReadable(set.rs1) || fileReadable(set.ct1) || fileReadable(set.pt1)) return;
  vPrintMessage(1, "%s", message::D1025);
  vFail("%s", message::D1025Second);
}

void clearPriorFields() {
  const int rows = partElements();
  ResidualStressField& f = residualStressField;
  for (auto* column : {&f.stress1, &f.stress2, &f.kindFraction, &f.orientationValue})
    column->assign(rows, 0.0);
  for (auto* column : {&f.direction1, &f.direction2, &f.direction3}) column->assign(rows, Direction{});
  elementTemperatureField.sideTemperature1.assign(rows, 0.0);
  elementTemperatureField.sideTemperature2.assign(rows, 0.0);
  residualStressValid = 1;
  temperatureFromCool = 0;
}

void setNeutralStress() {
  const int rows = partElements();
  ResidualStressField& f = residualStressField;
  for (auto* column : {&f.stress1, &f.stress2}) column->assign(rows, 0.0);
  for (auto* column : {&f.kindFraction, &f.orientationValue}) column->assign(rows, 1.0);
  f.direction1.assign(rows, {1.0, 0.0, 0.0});
  f.direction2.assign(rows, {0.0, 1.0, 0.0});
  f.direction3.assign(rows, {0.0, 0.0, 1.0});
  residualStressValid = 0;
}

void setAmbientTemperature() {
  elementTemperatureField.sideTemperature1.assign(partElements(), processRecord.ambientTemperature);
  elementTemperatureField.sideTemperature2.assign(partElements(), processRecord.ambientTemperature);
}

RecordCheck readResidualStress(TextReader& file, const Column<int>& savedNode3) {
  checkTitle(file);
  RecordCheck check;
  int element = 0;
  bool orthonormal = true;
  while (const int number = nextElement(file, check.records + 1)) {
    ++check.records;
    StressRecord s = readStressRecord(file, check.records);
    if (savedNode3[number] < 1) continue;
    const bool good = normaliseDirections(s);
    if (++element <= partElements()) storeStress(s, element);
    if (orthonormal && !good)
      vPrintMessage(
          1,
          " ** Warning **  The Residual Stress file is not correct format. The computation process will "
          "neglect residual stress effect and use isotropic properties.\n\n");
    orthonormal = orthonormal && good;
  }
  if (!orthonormal || !check.consistent())
    setNeutralStress();
  else
    requireAllElements(file, element, "stress");
  return check;
}

RecordCheck readPartTemperature(TextReader& file) {
  return readTemperatures(
      file, [](int number) { return elementTable.node3[number] < 1; },
      [&file](long record) {
        const double value = file.needDouble("temperature", record);
        return Sides{value, value};
      });
}

RecordCheck readCoolTemperature(TextReader& file, const Column<int>& savedNode3) {
  temperatureFromCool = 1;
  return readTemperatures(
      file, [&savedNode3](int number) { return savedNode3[number] < 1; },
      [&file](long record) {
        const double first = file.needDouble("temperature", record);
        const double second = ModelKind == 0 ? file.needDouble("second temperature", record) : first;
        return Sides{second, first};
      });
}

}  // namespace keld
