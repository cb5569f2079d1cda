// The model stage and the analysis driver, called by the entry point between the inputs and the results.
#pragma once

namespace keld {

/// Integration tables, prior results, boundary selection, wedge renumbering, freedoms, restraint with the
/// volume pass, material constants.
void modelStage();

/// Pattern, then one or two passes of assembly and solution; leaves the displacement vectors in `solution`.
void analysisDriver();

}  // namespace keld
