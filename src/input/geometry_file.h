// Reader of the part geometry, ".PG1". Called by the input stage, at its begin and at its end.
#pragma once

#include <functional>

#include "run/base/text_reader.h"

namespace keld {

/// The attempts to open ".PG1" before any other input is read: one, one more at once, then ten with a pause
/// before each. D1020 when the second succeeds, as the file arrives just then, or when none does.
void awaitGeometry(const std::function<bool()>& canBeOpened);

/// The look at ".PG1" before any other input: waits for it (awaitGeometry), reads title block and header.
void preReadGeometry();

/// The main read, with its heading: fills `elementTable`, `nodeTable` and the factors of `geometry`.
void readGeometry();

/// What the main read does with the file.
void readGeometryRecords(TextReader& file);

/// Header line of ".PG1".
struct GeometryHeader {
  int elementCount = 0, nodeCount = 0;
  double thicknessFactor = 0.0, coordinateFactor = 0.0;
};

/// Title block and header. Counts for which the rest of the file is too short end the run.
GeometryHeader readGeometryHeader(TextReader& file);

}  // namespace keld
