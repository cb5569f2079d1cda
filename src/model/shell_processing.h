// Shell model processing: pairs the faces of a closed skin, repairs its thickness and makes connector bars.
// Called by the prior-result stage in a Shell run alone.
#pragma once

namespace keld {

/// Leaves the final thickness of every element of the file in the ElementTable. Needs the element geometry.
/// A scratch file of a former run on the same mesh takes the place of the work.
void shellProcessing();

/// Element numbers of the pairs turned from the file's to compact ones by shell.partElementNumber.
void translatePartners();

}  // namespace keld
