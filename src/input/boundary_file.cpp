// Reading of ".BC1": three node numbers behind "[Keld_FixBC]".
// Called by the input stage.
#include "input/boundary_file.h"

#include "input/process_record.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

bool readFixedNodes(TextReader& file) {
  bool found = false;
  while (const auto line = file.line()) {
    if (!line->starts_with("[Keld_FixBC]")) continue;
    found = true;
    for (std::size_t i = 1; i <= 3; ++i) {
      processRecord.bcNode[i] = file.needInt("boundary node number", static_cast<long>(i));
      file.skipLine();
    }
    vPrintMessage(1, "\n");
    for (std::size_t i = 1; i <= 3; ++i)
      vPrintMessage(1, "    BC_node %zu= %ld\n", i, static_cast<long>(processRecord.bcNode[i]));
  }
  return found;
}

bool readBoundaryFile() {
  if (!fileReadable(workingFiles.bc1)) return false;
  TextReader file = TextReader::open(workingFiles.bc1);
  return readFixedNodes(file);
}

}  // namespace keld
