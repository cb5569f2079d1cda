// Compaction of the ElementTable in place.
// Called by the prior-result stage.
#include "input/prior_compact.h"

#include <cstddef>

#include "input/mesh_tables.h"

namespace keld {
namespace {

void copyRow(const FileElements& file, std::size_t from, std::size_t to) {
  elementTable.node1[to] = file.node1[from];
  elementTable.node2[to] = file.node2[from];
  elementTable.node3[to] = file.node3[from];
  elementTable.thickness[to] = file.thickness[from];
}

/// Copies the elements of one kind, in the order of their records,
/// to the rows behind `row`; returns the last.
std::size_t copyElements(const FileElements& file, bool part, std::size_t row) {
  for (std::size_t record = 1; record < elementTable.fileOrder.size(); ++record) {
    const auto element = static_cast<std::size_t>(elementTable.fileOrder[record]);
    if ((file.node3[element] > 0) == part) copyRow(file, element, ++row);
  }
  return row;
}

}  // namespace

FileElements compactPartElements() {
  FileElements file{elementTable.node1, elementTable.node2, elementTable.node3, elementTable.thickness};
  elementTable.partElementCount = static_cast<int>(copyElements(file, true, 0));
  return file;
}

std::vector<int> partElementNumbers(const FileElements& file) {
  std::vector<int> compact(file.node3.size(), 0);
  int row = 0;
  for (std::size_t record = 1; record < elementTable.fileOrder.size(); ++record) {
    const auto element = static_cast<std::size_t>(elementTable.fileOrder[record]);
    if (file.node3[element] > 0) compact[element] = ++row;
  }
  return compact;
}

void appendRunnerElements(const FileElements& file) {
  copyElements(file, false, static_cast<std::size_t>(elementTable.partElementCount));
  elementTable.correctedThickness = {};
  elementTable.thicknessScale = {};
  elementTable.fileOrder = {};
}

}  // namespace keld
