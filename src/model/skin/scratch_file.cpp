// Reading and writing of the scratch file, field by field.
#include "model/skin/scratch_file.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "input/mesh_tables.h"
#include "model/skin/shell_tables.h"
#include "run/base/pending_file.h"
#include "run/base/text_reader.h"
#include "run/base/vector3.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::size_t headerBytes = 46, nodeBytes = 34, elementBytes = 76;

/// Length of the file up to the records of so many elements.
constexpr std::size_t bytesOf(int nodes, int elements) {
  return headerBytes + static_cast<std::size_t>(nodes) * nodeBytes +
         static_cast<std::size_t>(elements) * elementBytes;
}

class Packer {
 public:
  explicit Packer(std::string& bytes) : bytes_(bytes) {}
  Packer& operator<<(char marker) {
    bytes_.push_back(marker);
    return *this;
  }
  Packer& operator<<(std::int32_t value) { return add(value); }
  Packer& operator<<(double value) { return add(value); }

 private:
  template <class T>
  Packer& add(T value) {
    char raw[sizeof(T)];
    std::memcpy(raw, &value, sizeof(T));
    bytes_.append(raw, sizeof(T));
    return *this;
  }
  std::string& bytes_;
};

template <class T>
T fieldAt(std::string_view bytes, std::size_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof(T));
  return value;
}

void packElement(Packer& out, int e) {
  const int n1 = elementTable.node1[e], n2 = elementTable.node2[e], n3 = elementTable.node3[e];
  const int kind = shell.elementKind[e] == -1 || shell.elementKind[e] == -2 ? shell.elementKind[e] : 1;
  const double t = elementTable.thickness[e], f = geometry.thicknessFactor;
  const double a = (f + 0.13) * t, b = t / f, c = (3.0 * a + 2.0 * b) / 5.0;
  const double sum = a + b + c, third = sum / 3.0;
  out << e << 'Q' << n1 << n2 << n3 << std::abs(n1 + n2 - n3) + 1 << 100 << 'U' << b << a << c << third << 'A'
      << kind << -2 << (sum + third) * 0.25 << 'R';
}

/// One record of each kind, decoded.
struct StoredElement {
  int node1, node2, node3, kind;
  double thickness;  // in the unit of the geometry file
};

StoredElement elementAt(std::string_view bytes, std::size_t offset) {
  return {fieldAt<std::int32_t>(bytes, offset + 5), fieldAt<std::int32_t>(bytes, offset + 9),
          fieldAt<std::int32_t>(bytes, offset + 13), fieldAt<std::int32_t>(bytes, offset + 59),
          fieldAt<double>(bytes, offset + 26)};
}

Vector3 nodeAt(std::string_view bytes, int node, double factor) {
  const std::size_t offset = bytesOf(node - 1, 0);
  return {fieldAt<double>(bytes, offset + 4) * factor, fieldAt<double>(bytes, offset + 13) * factor,
          fieldAt<double>(bytes, offset + 21) * factor};
}

/// How many of the three coordinates agree with the present node within 1e-5 cm; a NaN agrees with nothing.
int agreeingCoordinates(const Vector3& stored, int node) {
  return (std::abs(stored[0] - nodeTable.x[node]) <= 1e-5) +
         (std::abs(stored[1] - nodeTable.y[node]) <= 1e-5) +
         (std::abs(stored[2] - nodeTable.z[node]) <= 1e-5);
}

bool plausible(const StoredElement& s, bool connector, int nodeCount) {
  const auto isNode = [&](int n) { return n >= 1 && n <= nodeCount; };
  return isNode(s.node1) && isNode(s.node2) && (s.node3 == 0 || (!connector && isNode(s.node3))) &&
         std::isfinite(s.thickness);
}

/// Everything that decides whether the file belongs to this mesh, before anything is taken over.
bool fitsMesh(std::string_view bytes) {
  if (bytes.size() < headerBytes) return false;
  const int inputCount = fieldAt<std::int32_t>(bytes, 1), storedCount = fieldAt<std::int32_t>(bytes, 6);
  const int nodeCount = fieldAt<std::int32_t>(bytes, 11);
  const double thicknessFactor = fieldAt<double>(bytes, 28), factor = fieldAt<double>(bytes, 37);
  if (nodeCount != nodeTable.nodeCount || inputCount != elementTable.elementCount) return false;
  if (storedCount < inputCount || nodeCount < 1) return false;
  if (!std::isfinite(factor) || !std::isfinite(thicknessFactor)) return false;
  if (bytes.size() < bytesOf(nodeCount, storedCount)) return false;

  if (agreeingCoordinates(nodeAt(bytes, 1, factor), 1) != 3) return false;
  for (const int sample : {nodeCount / 2 + 1, nodeCount})
    if (sample > 1 && sample <= nodeCount && agreeingCoordinates(nodeAt(bytes, sample, factor), sample) == 0)
      return false;
  for (int n = 1; n <= nodeCount; ++n)
    for (const double value : nodeAt(bytes, n, factor))
      if (!std::isfinite(value)) return false;
  for (int e = 1; e <= storedCount; ++e)
    if (!plausible(elementAt(bytes, bytesOf(nodeCount, e - 1)), e > inputCount, nodeCount)) return false;
  return true;
}

}  // namespace

std::string scratchFileBytes() {
  std::string bytes;
  bytes.reserve(bytesOf(nodeTable.nodeCount, shell.runningCount));
  Packer out(bytes);
  const int nodes = nodeTable.nodeCount, elements = elementTable.elementCount;
  out << 'Q' << elements << 'U' << shell.runningCount << 'A' << nodes << (nodes + elements) / 2 << 2000.2
      << 'R' << geometry.thicknessFactor << 'D' << geometry.coordinateFactor << 'O';
  const double f = geometry.coordinateFactor;
  for (int n = 1; n <= nodes; ++n)
    out << n << nodeTable.x[n] / f << 'D' << nodeTable.y[n] / f << nodeTable.z[n] / f << 'O' << -1;
  for (int e = 1; e <= shell.runningCount; ++e) packElement(out, e);
  return bytes;
}

bool acceptScratchFile(std::string_view bytes) {
  if (!fitsMesh(bytes)) return false;
  shell.runningCount = fieldAt<std::int32_t>(bytes, 6);
  geometry.thicknessFactor = fieldAt<double>(bytes, 28);
  geometry.coordinateFactor = fieldAt<double>(bytes, 37);
  for (int n = 1; n <= nodeTable.nodeCount; ++n) {
    const Vector3 p = nodeAt(bytes, n, geometry.coordinateFactor);
    nodeTable.x[n] = p[0];
    nodeTable.y[n] = p[1];
    nodeTable.z[n] = p[2];
  }

  const int rows = shell.runningCount;
  for (auto* column : {&elementTable.node1, &elementTable.node2, &elementTable.node3}) column->resize(rows);
  elementTable.thickness.resize(rows);
  shell.elementKind.resize(rows, 0);
  for (int e = 1; e <= shell.runningCount; ++e) {
    const StoredElement s = elementAt(bytes, bytesOf(nodeTable.nodeCount, e - 1));
    elementTable.node1[e] = s.node1;
    elementTable.node2[e] = s.node2;
    elementTable.node3[e] = s.node3;
    if (s.node3 == 0 && shell.elementKind[e] >= 2) continue;
    elementTable.thickness[e] = s.thickness * geometry.thicknessFactor;
    shell.elementKind[e] = s.kind;
  }
  return true;
}

void writeScratchFile() {
  PendingFile file(workingFiles.baseName);
  if (file.isOpen() && file.write(scratchFileBytes())) file.finish();
}

bool readScratchFile() {
  std::error_code none;
  if (!std::filesystem::is_regular_file(workingFiles.baseName, none)) return false;  // a folder, perhaps
  return fileReadable(workingFiles.baseName) &&
         acceptScratchFile(TextReader::readWhole(workingFiles.baseName));
}

}  // namespace keld
