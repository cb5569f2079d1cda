// The volume pass: volumes and temperatures of the wedge nodes, mean determinant of the elements.
// Called once by the restraint set-up.
#pragma once

namespace keld {

/// Fills `volumes`. A mesh without any positive determinant,
/// or with a volume that isn't finite, ends the run.
void volumePass();

/// Reports D5015 and D5016 of every element that earns them, once per integration point, in element order;
/// after the first of each kind they are counted alone (element_warnings.h).
/// Each pass over the elements does so; the volume pass notes the elements.
void reportBadElements();

}  // namespace keld
