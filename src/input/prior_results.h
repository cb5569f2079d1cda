// Readers of the earlier stages' results, ".RS1", ".PT1" and ".CT1".
// checkWorkingFiles is called by the input stage; the readers by readPriorResults (model/prior_stage.h).
#pragma once

#include <vector>

#include "run/base/column.h"
#include "run/base/text_reader.h"

namespace keld {

/// Writes the title of the analysis; D1025 when none of the three files can be opened.
void checkWorkingFiles();

/// Numbers of element records decide: a file whose count isn't elementCount is inconsistent.
struct RecordCheck {
  long records = 0;
  bool consistent() const;
};

/// Reads ".RS1" into `residualStressField`. An inconsistent file, or a direction triple that isn't
/// orthonormal, leaves the neutral values and clears `residualStressValid`.
/// savedNode3: by element number of the file.
RecordCheck readResidualStress(TextReader& file, const Column<int>& savedNode3);

/// Reads ".PT1" into `elementTemperatureField`; runner elements are told by the compact table as it stands.
RecordCheck readPartTemperature(TextReader& file);

/// Reads ".CT1" into `elementTemperatureField`. Sets `temperatureFromCool`.
RecordCheck readCoolTemperature(TextReader& file, const Column<int>& savedNode3);

/// Sizes both fields for partElementCount elements: stress and temperatures 0, and the flags at their start.
void clearPriorFields();

void setNeutralStress();
void setAmbientTemperature();

}  // namespace keld
