// The prior-result stage: extents, compact ElementTable, the three result files and what their loss means.
// Second action of the model stage.
#include <algorithm>

#include "input/mesh_tables.h"
#include "input/prior_compact.h"
#include "input/prior_results.h"
#include "model/element_geometry.h"
#include "model/prior_stage.h"
#include "model/skin/shell_processing.h"
#include "run/base/column.h"
#include "run/base/failure.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {
namespace {

enum class FileState { good, absent, inconsistent };

/// What has become of the three files; ".CT1" counts as absent where it isn't read.
struct PriorFiles {
  FileState stress = FileState::good, part = FileState::good, cool = FileState::absent;
};

double range(const Column<double>& coordinate) {
  const auto [least, most] = std::minmax_element(coordinate.begin(), coordinate.end());
  return *most - *least;
}

void reportExtent() {
  const auto [smallest, largest] = std::minmax({range(nodeTable.x), range(nodeTable.y), range(nodeTable.z)});
  geometry.largestExtent = largest;
  geometry.smallestExtent = smallest;
  vPrintMessage(1, "\n");
  vPrintMessage(2, "<br>\n");
  vPrintMessage(1, "   Part Max. Extent= %.2lf  cm\n", largest);
}

/// A Shell run sets the final thickness of the elements while the ElementTable is in file order.
void processShellModel() {
  elementGeometry();
  shellProcessing();
}

FileState stateOf(const RecordCheck& check) {
  return check.consistent() ? FileState::good : FileState::inconsistent;
}

FileState readStressFile(const FileElements& elements) {
  if (!fileReadable(workingFiles.rs1)) {
    setNeutralStress();
    return FileState::absent;
  }
  TextReader file = TextReader::open(workingFiles.rs1);
  return stateOf(readResidualStress(file, elements.node3));
}

FileState readPartFile() {
  if (!fileReadable(workingFiles.pt1)) {
    setAmbientTemperature();
    return FileState::absent;
  }
  TextReader file = TextReader::open(workingFiles.pt1);
  return stateOf(readPartTemperature(file));
}

FileState readCoolFile(const FileElements& elements, FileState part) {
  if (part == FileState::good || !fileReadable(workingFiles.ct1)) return FileState::absent;
  TextReader file = TextReader::open(workingFiles.ct1);
  return stateOf(readCoolTemperature(file, elements.node3));
}

void warn(bool condition, const char* words) {
  if (!condition) return;
  vPrintMessage(2, "<br>\n");
  vPrintMessage(1, "%s", words);
}

void reportLosses(const PriorFiles& files) {
  using enum FileState;
  const bool coolLost = files.cool != good;
  warn(files.stress == inconsistent,
       "\n !! Warring !!  Residual stress(.RS1/RS2) file element number inconsistent.\n");
  warn(files.stress == absent, "\n !! Warring !! Residual stress(*.RS1/RS2) file doesn't exist.\n");
  warn(files.part == inconsistent,
       "\n !! Warring !!  Inconsistent mold temp. element number is detected. Check element number in "
       "'filename.PT1/PT2'\n");
  warn(files.part == absent, "\n !! Warring !!  Part temperature(*.PT1/PT2) file doesn't exist.\n");
  warn(files.part == inconsistent && coolLost,
       "\n !! Warring !!  Inconsistent mold temp. element number is detected. Check element number in "
       "'filename.CT1/CT2'\n");
  warn(files.part == absent && coolLost,
       "\n !! Warring !!  Part temperature(*.CT1/CT2) file doesn't exist.\n");
  vPrintMessage(1, "\n");

  if (files.stress == good || files.part == good || !coolLost) return;
  vPrintMessage(2, "<br>\n");
  vFail("\n !! Error !!  The required files are not enough for executing KELD.\n");
}

}  // namespace

void readPriorResults() {
  reportExtent();
  if (ModelKind == 1) processShellModel();
  const FileElements elements = compactPartElements();
  if (ModelKind == 1) translatePartners(partElementNumbers(elements));
  clearPriorFields();
  PriorFiles files;
  files.stress = readStressFile(elements);
  files.part = readPartFile();
  files.cool = readCoolFile(elements, files.part);
  reportLosses(files);
  appendRunnerElements(elements);
}

}  // namespace keld
