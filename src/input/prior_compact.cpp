// Compaction of the ElementTable in place.
// Called by the prior-result stage.
#include "input/prior_compact.h"

#include "input/mesh_tables.h"

namespace keld {
namespace {

void copyRow(const FileElements& file, int from, int to) {
  elementTable.node1[to] = file.node1[from];
  elementTable.node2[to] = file.node2[from];
  elementTable.node3[to] = file.node3[from];
  elementTable.thickness[to] = file.thickness[from];
}

/// Copies the elements of one kind, in the order of their records,
/// to the rows behind `row`; returns the last.
int copyElements(const FileElements& file, bool part, int row) {
  for (const int element : elementTable.fileOrder)
    if ((file.node3[element] > 0) == part) copyRow(file, element, ++row);
  return row;
}

}  // namespace

FileElements compactPartElements() {
  FileElements file{elementTable.node1, elementTable.node2, elementTable.node3, elementTable.thickness};
  elementTable.partElementCount = copyElements(file, true, 0);
  return file;
}

Column<int> partElementNumbers(const FileElements& file) {
  Column<int> compact(file.node3.rows(), 0);
  int row = 0;
  for (const int element : elementTable.fileOrder)
    if (file.node3[element] > 0) compact[element] = ++row;
  return compact;
}

void appendRunnerElements(const FileElements& file) {
  copyElements(file, false, elementTable.partElementCount);
  elementTable.correctedThickness = {};
  elementTable.thicknessScale = {};
  elementTable.fileOrder = {};
}

}  // namespace keld
