// Reader of the fixed boundary nodes, the optional ".BC1". Called by the input stage.
#pragma once

#include "run/base/text_reader.h"

namespace keld {

/// Reads ".BC1" when it can be opened. Returns whether it has given the boundary nodes.
bool readBoundaryFile();

/// Replaces bcNode by the numbers behind each "[Keld_FixBC]";
/// the last tag wins. Returns whether one was there.
bool readFixedNodes(TextReader& file);

}  // namespace keld
