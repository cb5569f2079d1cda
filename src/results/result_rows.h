// Rows of the results: displacement of a geometry node, of the wall's mid surface.
// Used by the results file and the summary.
#pragma once

#include <array>

namespace keld {

/// A row in cm: three displacements, their length, the sink mark (main block alone).
using ResultRow = std::array<double, 5>;

enum class ResultBlock { main, residual, thermal };

/// Row of geometry node `node`; zeros for a node of no triangle. Main: total displacement and sink mark;
/// residual: in-mold displacement; thermal: their difference.
ResultRow resultRow(ResultBlock block, int node);

/// Extremes over the rows of the main block, cm.
struct ResultExtremes {
  std::array<double, 3> maximum{1e-20, 1e-20, 1e-20}, minimum{1e20, 1e20, 1e20};
  double greatestLength = 0.0;
  double greatestSink = 1e-20, leastSink = 1e20;

  void include(const ResultRow& row);
};

/// Extremes of all main rows.
ResultExtremes resultExtremes();

}  // namespace keld
