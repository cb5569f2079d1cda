// The compact ElementTable: part elements first, runner elements behind them, each in file order.
// Called by the prior-result stage.
#pragma once

#include "run/base/column.h"

namespace keld {

/// The file's own element table, by element number.
struct FileElements {
  Column<int> node1, node2, node3;
  Column<double> thickness;  // cm
};

/// Saves the file's table and writes the part elements over its first rows; the rows behind them still hold
/// what the file gave them. Sets partElementCount.
FileElements compactPartElements();

/// Compact number of each part element by its number in the file, 0 for a runner element.
Column<int> partElementNumbers(const FileElements& file);

/// Writes the runner elements behind the part elements and releases the
/// columns that only the file order needs.
void appendRunnerElements(const FileElements& file);

}  // namespace keld
