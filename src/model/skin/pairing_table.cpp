// Reading of the pairing table and the start of the program that makes it.
#include "model/skin/pairing_table.h"

#include <cmath>
#include <filesystem>
#include <system_error>
#include <vector>

#include "input/mesh_tables.h"
#include "model/skin/shell_tables.h"
#include "run/base/platform.h"
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
  std::vector<PairingRow> rows;
  while (file.readInt()) {
    const auto partner = file.readInt();
    const auto thickness = file.readDouble();
    if (!partner || !thickness || !std::isfinite(*thickness)) break;
    if (*partner < 0 || *partner > count || static_cast<int>(rows.size()) == count) return false;
    rows.push_back({*partner, *thickness});
  }
  if (static_cast<int>(rows.size()) != count) return false;
  for (int e = 1; e <= count; ++e) {
    shell.elementPartner[e] = rows[e - 1].partner;
    elementTable.thickness[e] = rows[e - 1].thickness;
  }
  return true;
}

void obtainPairingTable() {
  if (readFromFile()) return;
  runExternalProgram(workingFiles.toolFolder + "/Movrex.exe",
                     {workingFiles.baseName, "1@", workingFiles.toolFolder, "2@"});
  readFromFile();
}

}  // namespace keld
