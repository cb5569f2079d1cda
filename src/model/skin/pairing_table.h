// The pairing table of the external program: partner and thickness of every element of a skin mesh.
#pragma once

#include "run/base/reading.h"

namespace keld {

/// Reads the table at the bare base name; where it is missing or doesn't fit the mesh, starts the program
/// that writes it, waits, and reads once more. A table that still doesn't fit leaves partners and thickness
/// alone, with a warning.
void obtainPairingTable();

/// Takes partner and thickness from rows "element partner thickness" in file order; a partner below 1 is
/// none, one above the element count ends the run. Changes nothing and returns false unless there is exactly
/// one usable row per element.
bool readPairingTable(TextReader file);

}  // namespace keld
