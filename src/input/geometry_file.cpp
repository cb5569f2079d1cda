// Reading of ".PG1": title block, header, element records, node records.
// Called by the input stage.
#include "input/geometry_file.h"

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

#include "input/input_echo.h"
#include "input/mesh_tables.h"
#include "run/base/column.h"
#include "run/base/element_warnings.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/reading.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

int ModelKind = 0;
ElementTable elementTable;
NodeTable nodeTable;
GeometryScalars geometry;

namespace {

constexpr double leastThickness = 1e-10;                 // cm, at or below: D4016
constexpr double leastCorrectedThickness = 1e-20;        // cm, below: no thickness correction
constexpr int exemptFlag = -1;                           // element flag that passes over the thickness check
constexpr long shortestElement = 16, shortestNode = 10;  // characters of a record, separators counted

struct ElementRecord {
  int number = 0;
  int node1 = 0, node2 = 0, node3 = 0;
  double thickness = 0.0;  // before the factor
  int flag = 0;
  bool hasDivisor = false;  // the ninth field is there
  double divisor = 1.0;
};

struct NodeRecord {
  int number = 0;
  double x = 0.0, y = 0.0, z = 0.0;
  bool gate = false;
};

/// A number that only has to stand there.
void droppedNumber(TextReader& file, const char* what, long record) {
  if (!file.readDouble())
    file.fault("a number (" + std::string(what) + " of record " + std::to_string(record) + ")");
}

/// Whether more than a line end stands right behind the field read last.
bool lineGoesOn(const TextReader& file) { return file.peek() != '\n' && !file.atEnd(); }

/// A blank behind the last field counts as a further field, which then comes from the next line and shifts
/// all that follows. The fault shows later: it names this record too.
void noteBlankEnd(TextReader& file, const char* kind, long record) {
  if (file.hasNote() || !file.onlyBlanksBeforeLineEnd()) return;
  file.noteForFaults("before it, " + std::string(kind) + " record " + std::to_string(record) + " on line " +
                     std::to_string(file.lineNumber()) +
                     " ends in a blank, which counts as a further field and takes the number that begins the "
                     "next line: take the blank away");
}

ElementRecord readElementRecord(TextReader& file, long record, const GeometryHeader& header) {
  ElementRecord e;
  const auto node = [&](int least, const char* what) {
    if (header.nodeCount < 1) return file.needInt(what, record);  // D4003 ends this run
    return file.needIntInRange(least, header.nodeCount, what, record);
  };
  e.number = file.needIntInRange(1, header.elementCount, "number of the element", record);
  e.node1 = node(1, "first node of element");
  e.node2 = node(1, "second node of element");
  e.node3 = node(0, "third node of element, 0 for a runner,");
  e.thickness = file.needDouble("thickness of element", record);
  e.flag = file.needInt("flag of element", record);
  droppedNumber(file, "seventh field of element", record);
  droppedNumber(file, "eighth field of element", record);
  e.hasDivisor = lineGoesOn(file);
  if (e.hasDivisor) noteBlankEnd(file, "element", record);
  if (e.hasDivisor) e.divisor = file.needDouble("ninth field of element", record);
  return e;
}

/// The running field of D4016 shows the element reported before, and elementCount + 1 at first.
void checkThickness(const ElementRecord& e, double thickness, int& runningField) {
  if (ModelKind != 0 || e.flag == exemptFlag || thickness > leastThickness) return;
  vWarnOfElement(ElementWarning::D4016, message::D4016, runningField);
  runningField = e.number;
}

void storeElement(const ElementRecord& e, double thickness) {
  const int i = e.number;
  ElementTable& table = elementTable;
  table.node1[i] = e.node1;
  table.node2[i] = e.node2;
  table.node3[i] = e.node3;
  table.thickness[i] = thickness;
  table.correctedThickness[i] = e.hasDivisor ? thickness : 0.0;
  table.thicknessScale[i] = e.hasDivisor ? 1.0 / e.divisor : 1.0;
  if (!e.hasDivisor || thickness < leastCorrectedThickness) geometry.thicknessCorrection = 0;
  if (e.node3 == 0) ++geometry.runnerElementCount;
}

void readElements(TextReader& file, const GeometryHeader& header) {
  const int rows = std::max(header.elementCount, 0);
  ElementTable& table = elementTable;
  table = ElementTable{};
  table.elementCount = header.elementCount;
  table.fileOrder.assign(rows, 0);
  for (auto* column : {&table.node1, &table.node2, &table.node3}) column->assign(rows, 0);
  for (auto* column : {&table.thickness, &table.correctedThickness, &table.thicknessScale})
    column->assign(rows, 0.0);

  geometry.thicknessCorrection = 1;
  geometry.runnerElementCount = 0;
  Column<char> given(rows, 0);
  int runningField = header.elementCount + 1;
  for (int record = 1; record <= header.elementCount; ++record) {
    const ElementRecord e = readElementRecord(file, record, header);
    char& twice = given[e.number];
    if (twice)
      file.refuse("element record " + std::to_string(record) + " has number " + std::to_string(e.number) +
                  ", which a record before it has too; each element needs a number of its own");
    twice = 1;
    const double thickness = e.thickness * header.thicknessFactor;
    storeElement(e, thickness);
    table.fileOrder[record] = e.number;
    checkThickness(e, thickness, runningField);
  }
}

NodeRecord readNodeRecord(TextReader& file, long record, const GeometryHeader& header) {
  NodeRecord n;
  n.number = file.needIntInRange(1, header.nodeCount, "number of the node", record);
  n.x = file.needDouble("x of node", record);
  n.y = file.needDouble("y of node", record);
  n.z = file.needDouble("z of node", record);
  n.gate = file.needInt("gate flag of node", record) > 0;
  if (n.gate && lineGoesOn(file)) {
    noteBlankEnd(file, "node", record);
    for (int i = 6; i <= 10; ++i) droppedNumber(file, "field behind the gate flag of node", record);
  }
  return n;
}

void readNodes(TextReader& file, const GeometryHeader& header) {
  const int rows = std::max(header.nodeCount, 0);
  NodeTable& table = nodeTable;
  table = NodeTable{};
  table.nodeCount = header.nodeCount;
  for (auto* column : {&table.x, &table.y, &table.z}) column->assign(rows, 0.0);
  if (header.elementCount < 1) return;  // D4002 ends this run

  Column<char> given(rows, 0);
  for (int record = 1; record <= header.nodeCount; ++record) {
    const NodeRecord n = readNodeRecord(file, record, header);
    const int i = n.number;
    if (given[i])
      file.refuse("node record " + std::to_string(record) + " has number " + std::to_string(n.number) +
                  ", which a record before it has too; each node needs a number of its own");
    given[i] = 1;
    table.x[i] = n.x * header.coordinateFactor;
    table.y[i] = n.y * header.coordinateFactor;
    table.z[i] = n.z * header.coordinateFactor;
    if (n.gate) table.gateNodes.push_back(record);
  }
}

}  // namespace

GeometryHeader readGeometryHeader(TextReader& file) {
  vCheckTitleBlock(file);
  GeometryHeader header;
  header.elementCount = file.needInt("number of elements in the header");
  header.nodeCount = file.needInt("number of nodes in the header");
  header.thicknessFactor = file.needDouble("thickness factor of the header");
  header.coordinateFactor = file.needDouble("coordinate factor of the header");
  const long needed =
      shortestElement * std::max(header.elementCount, 0) + shortestNode * std::max(header.nodeCount, 0);
  if (std::cmp_less(file.remaining(), needed))
    file.refuse("the file is too short for the " + std::to_string(header.elementCount) + " elements and " +
                std::to_string(header.nodeCount) + " nodes of its header");
  return header;
}

void awaitGeometry(const std::function<bool()>& canBeOpened) {
  if (canBeOpened()) return;
  if (canBeOpened()) vFail(message::D1020);
  for (int attempt = 1; attempt <= openAttempts; ++attempt) {
    std::this_thread::sleep_for(retryPause);
    if (canBeOpened()) return;
  }
  vFail(message::D1020);
}

void preReadGeometry() {
  awaitGeometry([] { return fileReadable(workingFiles.pg1); });
  TextReader file = TextReader::open(workingFiles.pg1);
  readGeometryHeader(file);
  ModelKind = 0;
}

void readGeometryRecords(TextReader& file) {
  const GeometryHeader header = readGeometryHeader(file);
  geometry = GeometryScalars{};
  geometry.thicknessFactor = header.thicknessFactor;
  geometry.coordinateFactor = header.coordinateFactor;
  readElements(file, header);
  vPrintMessage(1, "\n # Thickness Correction= %2d\n\n", geometry.thicknessCorrection);
  readNodes(file, header);
}

void readGeometry() {
  vPrintMessage(2, "<br>\n");
  echoHeading("\n # Geometric data information ......          \n");
  if (!waitForFile(workingFiles.pg1)) vFail(message::D1020);
  TextReader file = TextReader::open(workingFiles.pg1);
  readGeometryRecords(file);
}

}  // namespace keld
