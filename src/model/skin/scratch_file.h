// The binary scratch file of shell model processing: repaired mesh and connector rows of a former run.
// Little-endian, packed: a header of 46 bytes, 34 bytes a node, 76 bytes an element.
#pragma once

#include <string>
#include <string_view>

namespace keld {

/// The file's bytes for the present tables.
std::string scratchFileBytes();

/// Takes nodes, elements and factors from the bytes when they belong to this mesh: equal counts, node 1
/// within 1e-5 cm in each coordinate, the middle and the last node not off
/// in all three. Changes nothing otherwise.
bool acceptScratchFile(std::string_view bytes);

/// The same with the file at the bare base name. A file that can't be written is only missed by the next run.
void writeScratchFile();
bool readScratchFile();

}  // namespace keld
