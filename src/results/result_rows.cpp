// Rows of the results and their extremes. Used by the results file and the summary.
#include "results/result_rows.h"

#include <algorithm>
#include <cmath>

#include "model/model_tables.h"
#include "model/walls/wall_model.h"

namespace keld {

namespace {

double valueAt(ResultBlock block, int dof) {
  switch (block) {
    case ResultBlock::main:
      return solution.displacementTotal[dof];
    case ResultBlock::residual:
      return solution.displacementInMold[dof];
    case ResultBlock::thermal:
      break;
  }
  return solution.displacementTotal[dof] - solution.displacementInMold[dof];
}

}  // namespace

ResultRow resultRow(ResultBlock block, int node) {
  ResultRow row{};
  const int lower = wedgeNumbering.nodeToNewNode[node];
  if (lower < 1) return row;
  const int upper = wedgeNumbering.nodeMate[lower];
  const int lowerDof = freedoms.nodeFirstDof[lower], upperDof = freedoms.nodeFirstDof[upper];
  for (int c = 0; c < freedoms.nodeDofCount[lower]; ++c) {
    row[static_cast<std::size_t>(c)] =
        wallModel().midSurface(valueAt(block, lowerDof + c), valueAt(block, upperDof + c));
  }
  row[3] = std::sqrt(row[0] * row[0] + row[1] * row[1] + row[2] * row[2]);
  if (block == ResultBlock::main) row[4] = solution.rowSolution[lower];
  return row;
}

void ResultExtremes::include(const ResultRow& row) {
  for (std::size_t c = 0; c < 3; ++c) {
    maximum[c] = std::max(maximum[c], row[c]);
    minimum[c] = std::min(minimum[c], row[c]);
  }
  greatestLength = std::max(greatestLength, row[3]);
  greatestSink = std::max(greatestSink, row[4]);
  leastSink = std::min(leastSink, row[4]);
}

ResultExtremes resultExtremes() {
  ResultExtremes extremes;
  for (int node = 1; node <= wedgeNumbering.geometryNodeCount; ++node) {
    extremes.include(resultRow(ResultBlock::main, node));
  }
  return extremes;
}

}  // namespace keld
