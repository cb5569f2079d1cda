// Shell model processing: pairs the faces of a closed skin, repairs its thickness and makes connector bars.
// Called by the prior-result stage in a Shell run alone.
#pragma once

#include <vector>

#include "run/base/column.h"

namespace keld {

/// Leaves the final thickness of every element of the file in the ElementTable. Needs the element geometry.
/// A scratch file of a former run on the same mesh takes the place of the work.
void shellProcessing();

/// Turns the element numbers of the pairs from the file's to compact ones; `compact` holds the compact number
/// of each element of the file, 0 for a runner element.
void translatePartners(const Column<int>& compact);

/// Sizes the tables of the stage for the mesh tables as they stand: no pairs, no connectors.
void clearShellTables();

}  // namespace keld
