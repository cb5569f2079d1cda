// Tables of shell model processing: pairs across the wall, thickness classes and connector bars.
// Written and read by the shell_*.cpp files of this folder in a Shell run alone.
#pragma once

#include <cstdint>

#include "model/incidence.h"
#include "run/base/column.h"

namespace keld {

/// Elements are 1..elementTable.elementCount (triangles and runners of the file), connector rows stand behind
/// them in the ElementTable up to `runningCount`. Entry 0 of every table is unused.
struct ShellTables {
  int runningCount = 0;           // elements of the file plus connector rows
  Column<int> elementPartner;     // element across the wall, 0: none
  Column<char> elementSplitFlag;  // 1: thick element, which takes no part in pairing
  Column<int> elementKind;        // 1 element of the file, -1 connector of passes 1 and 2, -2 of pass 3
  Column<char> thicknessClass;    // per node 0, 1 or 2
  Column<char> featureNode;       // per node 0 or 1
  Column<int> connectorUse;       // per node, connectors that end there
  double characteristicThickness = 0.0;  // cm
};

extern ShellTables shell;

}  // namespace keld
