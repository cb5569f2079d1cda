// Reading of the pairing table and the start of the program that makes it.
#include "model/skin/pairing_table.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>

#include "input/mesh_tables.h"
#include "model/skin/shell_tables.h"
#include "run/base/failure.h"
#include "run/base/platform.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

struct PairingRow {
  int partner = 0;
  double thickness = 0.0;
};

bool readFromFile() {
  std::error_code none;
  if (!std::filesystem::is_regular_file(workingFiles.baseName, none))
    return false;  // a folder may have the name
  if (!fileReadable(workingFiles.baseName)) return false;
  return readPairingTable(TextReader::open(workingFiles.baseName));
}

}  // namespace

bool readPairingTable(TextReader file) {
  const int count = elementTable.elementCount;
  Column<PairingRow> table;
  while (file.readInt()) {
    const auto partner = file.readInt();
    const auto thickness = file.readDouble();
    if (!partner || !thickness || !std::isfinite(*thickness)) break;
    if (table.rows() == count) return false;
    table.push_back({std::max(*partner, 0), *thickness});
  }
  if (table.rows() != count) return false;
  for (int e = 1; e <= count; ++e) {
    if (table[e].partner <= count) continue;
    vFail(
        "\n !! Error !!  %s, row %d: the partner is element %d, and the part has %d. Expected an element "
        "from 1 on, "
        "or a number below 1 where there is none.\n",
        file.name().c_str(), e, table[e].partner, count);
  }
  for (int e = 1; e <= count; ++e) {
    shell.elementPartner[e] = table[e].partner;
    elementTable.thickness[e] = table[e].thickness;
  }
  return true;
}

void obtainPairingTable() {
  if (readFromFile()) return;
  const std::string tool = workingFiles.toolFolder + "/Movrex.exe";
  const int status = runExternalProgram(tool, {workingFiles.baseName, "1@", workingFiles.toolFolder, "2@"});
  if (readFromFile()) return;
  vPrintMessage(
      1,
      "\n !! Warning !!  The faces of the skin weren't paired: %s (%s), and \"%s\" holds no table with a row "
      "for each of %d elements. Thicknesses are those of the geometry file.\n",
      status < 0 ? "the pairing program can't be started" : "the pairing program has ended", tool.c_str(),
      workingFiles.baseName.c_str(), elementTable.elementCount);
}

}  // namespace keld
