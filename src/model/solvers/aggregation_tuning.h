// What smoothed aggregation is to do on a part's walls, by their model and the shape of their triangles.
// Called by the analysis driver before a solution by aggregation.
#pragma once

namespace keld {

/// Of the triangles of the part.
struct TriangleShapes {
  double shortEdgeOverWall = 1.0;  // mean of the shortest edge over the thickness
  double needleShare = 0.0;        // share of those whose longest edge is more than four heights
};

TriangleShapes triangleShapes();

/// Settings of TIER; docs/performance.md has the figures behind them.
struct AggregationTuning {
  int strength = 1;         // 1 by entries of the matrix, 2 by energy
  double limit = 0.08;      // of strong couplings
  int smoothingDegree = 2;  // of the Chebyshev smoother
};

/// Facets have displacements and rotations in a block, whose couplings compare by energy alone; thin parts of
/// them need small aggregates. Short edges leave slow errors across a wall of wedges, needles along theirs.
AggregationTuning aggregationTuning(bool facets, const TriangleShapes& shapes);

}  // namespace keld
