// Reader of KELD's own choices in ".CPU": the section "[Keld_Extension]".
// Called by the reader of the computing settings.
#pragma once

#include "run/base/text_reader.h"

namespace keld {

/// Finds the section wherever it stands in the file and takes its value lines, in their order, into the
/// ProcessRecord, with an echo into the open report. A file without the section, or a value line that is
/// missing, leaves the defaults. A value that isn't one of its choices ends the run.
void readExtensionSettings(TextReader& file);

}  // namespace keld
