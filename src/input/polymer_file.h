// Reader of the polymer's properties, ".MAL". Called by the input stage.
#pragma once

#include "run/base/text_reader.h"

namespace keld {

/// Waits for ".MAL" and reads it; D1009 when it doesn't come.
void readPolymerFile();

/// Fills both polymer records, the filler values and polymerMode, and echoes the blocks into the open report.
void readPolymerKinds(TextReader& file);

}  // namespace keld
