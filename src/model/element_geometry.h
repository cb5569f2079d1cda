// Geometry of the triangles of the file: normal, area, mean edge, corner cosine.
// Called by the prior-result stage, once per run, while the ElementTable is in file order.
#pragma once

namespace keld {

/// Fills nx, ny, nz, area, meanEdge and cornerCosine of all elements with node3 other than 0. A triangle
/// without area gets the normal (0, 0, 0).
void elementGeometry();

/// Releases these columns: once the ElementTable is compact, no stage reads them and their order is lost.
void releaseElementGeometry();

}  // namespace keld
