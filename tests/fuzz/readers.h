// Every reader of a run behind one name, fed from memory: for the fuzz targets and the replay of their seeds.
#pragma once

#include <array>
#include <string>

namespace keld::fuzz {

/// `read` gives the bytes to the reader named so. It throws RunEnded when the reader refuses them; a table
/// that breaks its own rules after a good read (an index or a value out of range) throws std::logic_error.
struct Reader {
  const char* name;
  void (*read)(std::string text);
};

extern const std::array<Reader, 11> readers;

const Reader& readerNamed(const std::string& name);

/// Label tables with a few records, in place of those of an installation.
void setTestLabels();

/// The mesh that the prior results belong to: records 5, 1, 3, 2, 4; element 5 is a runner; 2 to 4 triangles.
void setTestMesh();

/// UTF-16, little endian, of ASCII text.
std::string utf16(const std::string& text);

}  // namespace keld::fuzz
