// Reader of the process conditions, ".PRC". Called by the input stage.
#pragma once

#include "run/base/text_reader.h"

namespace keld {

/// Waits for ".PRC" and reads it; D1005 when it doesn't come.
void readProcessFile();

/// Fills the temperatures and filler values of `processRecord` and echoes the lines into the open report.
void readProcessConditions(TextReader& file);

}  // namespace keld
