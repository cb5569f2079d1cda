// The readers behind their names, with what must hold in the tables after a good read.
#include "fuzz/readers.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <stdexcept>
#include <vector>

#include "input/boundary_file.h"
#include "input/geometry_file.h"
#include "input/geometry_statistics.h"
#include "input/mesh_tables.h"
#include "input/polymer.h"
#include "input/polymer_file.h"
#include "input/prior_compact.h"
#include "input/prior_fields.h"
#include "input/prior_results.h"
#include "input/process_file.h"
#include "input/process_record.h"
#include "input/solver_settings.h"
#include "run/base/labels.h"
#include "run/base/reading.h"
#include "run/base/streams.h"

namespace keld::fuzz {
namespace {

void require(bool holds, const char* words) {
  if (!holds) throw std::logic_error(words);
}

bool finite(const Column<double>& values) {
  for (const double value : values)
    if (!std::isfinite(value)) return false;
  return true;
}

TextReader textOf(std::string text) { return TextReader::fromText(std::move(text), "input"); }

void process(std::string text) {
  TextReader file = textOf(std::move(text));
  const ReportSection section;
  readProcessConditions(file);
  const ProcessRecord& r = processRecord;
  require(finite({r.meltTemperature[1], r.meltTemperature[2], r.ambientTemperature, r.fillerWeightFraction,
                  r.fillerVolumeFraction}),
          "finite process values");
}

void settings(std::string text) {
  TextReader file = textOf(std::move(text));
  const ReportSection section;
  readSettingLines(file);
  require(processRecord.wallModel == wedge_walls || processRecord.wallModel == facet_walls,
          "a known wall model");
}

void boundary(std::string text) {
  TextReader file = textOf(std::move(text));
  readFixedNodes(file);
}

/// With one kind the second is a copy of the first, but for property11.
void polymerOfOneKind(const std::string& text) {
  processRecord.secondKind = 0;
  TextReader file = textOf(text);
  const ReportSection section;
  readPolymerKinds(file);
  require(polymerRecord[2].modulus.value == polymerRecord[1].modulus.value &&
              polymerRecord[2].pvt.count == polymerRecord[1].pvt.count &&
              polymerRecord[2].property11.count == 0,
          "the second kind is a copy of the first");
}

void polymer(std::string text) {
  polymerOfOneKind(text);
  processRecord.secondKind = 1;
  TextReader file = textOf(std::move(text));
  const ReportSection section;
  readPolymerKinds(file);
  for (int k = 1; k <= (polymerMode == 3 ? 1 : 2); ++k) {
    const PolymerRecord& r = polymerRecord[k];
    for (const CountedList* list : {&r.pvt, &r.thermalExpansion, &r.modulus, &r.poisson, &r.shearModulus}) {
      require(list->count >= 0 && list->count <= list->capacity, "polymer counts within their capacity");
      for (int i = 1; i <= list->count; ++i) require(!std::isnan((*list)(i)), "polymer numbers");
    }
    require(r.modulus.count >= 2 && (r.modulus.count > 2 || r.modulus(1) >= r.modulus(2)), "moduli in order");
  }
}

void geometryFile(std::string text) {
  TextReader file = textOf(std::move(text));
  readGeometryRecords(file);
  partCentreAndAxes();
  checkGeometry();
  echoGeometry();
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    for (const int node : {elementTable.node1[e], elementTable.node2[e]})
      require(node >= 1 && node <= nodeTable.nodeCount, "node numbers in range");
    require(elementTable.node3[e] >= 0 && elementTable.node3[e] <= nodeTable.nodeCount,
            "third node in range");
  }
}

void stress(std::string text) {
  setTestMesh();
  const FileElements saved = compactPartElements();
  clearPriorFields();
  TextReader file = textOf(std::move(text));
  readResidualStress(file, saved.node3);
  for (int e = 1; e <= residualStressField.stress1.rows(); ++e)
    for (const auto* direction : {&residualStressField.direction1, &residualStressField.direction2})
      require(std::abs(std::hypot((*direction)[e][0], (*direction)[e][1], (*direction)[e][2]) - 1.0) < 1e-9,
              "directions of unit length");
  require(finite(residualStressField.stress1) && finite(residualStressField.kindFraction), "finite stress");
}

void requireTemperatures() {
  for (const auto* side :
       {&elementTemperatureField.sideTemperature1, &elementTemperatureField.sideTemperature2}) {
    require(side->rows() == 4 && finite(*side), "finite temperatures");
    for (const double temperature : *side) require(temperature != 0.0, "a temperature for every element");
  }
}

void part(std::string text) {
  setTestMesh();
  compactPartElements();
  clearPriorFields();
  TextReader file = textOf(std::move(text));
  readPartTemperature(file);
  requireTemperatures();
}

void cool(std::string text) {
  setTestMesh();
  const FileElements saved = compactPartElements();
  clearPriorFields();
  TextReader file = textOf(std::move(text));
  readCoolTemperature(file, saved.node3);
  requireTemperatures();
}

void strings(std::string text) {
  const StringTable table = StringTable::parse(text, "strings");
  for (const int number : {0, 20001, 20002, 60001})
    if (const auto* record = table.find(number)) table.linesBehind(*record);
}

void units(std::string text) {
  const UnitTable table = UnitTable::parse(std::move(text), "units");
  for (int number = -1; number < 8; ++number)
    require(table.find(number).size() <= 50, "units of 50 characters");
}

/// Label tables of any bytes, the string table in front of the first zero byte, serve the echo of values.
void labels(std::string text) {
  const std::size_t end = std::min(text.find('\0'), text.size());
  const std::string unitText = text.substr(std::min(end + 1, text.size()));
  setLabelTables(
      {StringTable::parse(utf16(text.substr(0, end)), "strings"), UnitTable::parse(unitText, "units")});
  for (const int number : {20001, 22001, 60001, 20002, 50001, 31001}) {
    TextReader file = textOf("item= " + std::to_string(number) + " flag= 1 value= 2.5\n");
    const ReportSection section;
    vReadValueLine(file, ValueUse::echoed);
  }
}

}  // namespace

const std::array<Reader, 11> readers{{{"process", process},
                                      {"settings", settings},
                                      {"boundary", boundary},
                                      {"polymer", polymer},
                                      {"geometry", geometryFile},
                                      {"stress", stress},
                                      {"part", part},
                                      {"cool", cool},
                                      {"strings", strings},
                                      {"units", units},
                                      {"labels", labels}}};

const Reader& readerNamed(const std::string& name) {
  for (const Reader& reader : readers)
    if (name == reader.name) return reader;
  throw std::invalid_argument("no reader " + name);
}

std::string utf16(const std::string& text) {
  std::string bytes;
  for (const char c : text) bytes += {c, '\0'};
  return bytes;
}

void setTestLabels() {
  std::string table = "[Language= ENGLISH]\n60001 1\n/* Block title\nsecond line */\n";
  for (int i = 1; i <= 15; ++i) table += std::to_string(20000 + i) + " 2  Value " + std::to_string(i) + "\n";
  table += "21001 2  Ambient temperature\n30500 1  Cycle limit\n31001 1  Wall model\n";
  for (int i = 1; i <= 9; ++i) table += std::to_string(22000 + i) + " 1  Setting " + std::to_string(i) + "\n";
  setLabelTables({StringTable::parse(utf16(table), "strings"),
                  UnitTable::parse("[Unit= Metrics]\n1\n2       oC\n", "units")});
}

void setTestMesh() {
  elementTable = ElementTable{};
  elementTable.elementCount = 5;
  elementTable.fileOrder = {5, 1, 3, 2, 4};
  elementTable.node1 = elementTable.node2 = {1, 1, 1, 1, 1};
  elementTable.node3 = {11, 12, 13, 14, 0};
  elementTable.thickness = {0.1, 0.2, 0.3, 0.4, 0.5};
  processRecord.ambientTemperature = 298.15;
  ModelKind = 0;
}

}  // namespace keld::fuzz
