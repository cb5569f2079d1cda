// One level of smoothed aggregation and the whole hierarchy: what set-up leaves and the cycle walks.
// Level 1 is in single precision, the coarse ones in double: the energies of smooth vectors on coarse levels
// drown in the rounding of single precision, and the preconditioner is then no longer positive.
#pragma once

#include "tier/aggregation/block_kernels.h"
#include "tier/aggregation/coupling_norms.h"
#include "tier/aggregation/points.h"
#include "tier/store/numbered.h"

namespace tier::aggregation {

template <class T>
struct block_level {
  block_matrix<T> a;
  from_zero<T> inverse;  // inverted diagonal blocks
  double lambda = 1.0;   // estimate of the largest eigenvalue of D^-1 A
  int aggregates = 0;    // points of the next level, 0 on the last
  double theta = 0.0;    // limit of strength that made them
  block_matrix<T> p;     // interpolation from the next level
  transposed_index index;
  // vectors of the cycle, [n * block + padding]; a level above 1 has the two of the inner steps too
  from_zero<T> f, x, y, d, direction, product;

  int unknowns() const { return a.n * a.rows; }
};

/// Dense Cholesky factor of the last level's matrix.
class dense_cholesky {
 public:
  bool present() const { return n_ > 0; }
  void release() { *this = dense_cholesky(); }
  /// Takes the matrix, both triangles, by columns. False: not positive definite.
  bool factorise(int n, from_zero<double>&& matrix);
  void solve(double* x) const;
  int size() const { return n_; }

 private:
  int n_ = 0;
  from_zero<double> factor_;
};

enum cycle_kind : int { v_cycle = 1, w_cycle = 2, k_cycle = 3 };

/// What steers aggregation and its cycle.
struct options {
  strength_measure strength = strength_measure::entries;  // nagg_strength
  double theta = 0.08;         // limit of strength of a coupling on level 1, below 1 (agg_theta)
  double safety = 1.1;         // factor on estimated eigenvalues, 1 to 10 (agg_safety)
  int degree = 2;              // of the Chebyshev smoother, 1 to 20 (nagg_degree)
  cycle_kind cycle = k_cycle;  // nagg_cycle
  int coarse_points = 60;      // a level of at most so many points is the last, 1 to 1000 (nagg_points)
  int repair_sweeps = 1;       // of the near-null vectors, 0 to 100 (nagg_repair)
  int most_levels = 25;        // 1..25, least of levelx and max_level
};

struct aggregation_hierarchy {
  bool present = false;
  options chosen;
  double scale = 1.0;     // the levels hold scale * A
  double widening = 1.0;  // of all eigenvalue bounds, after restarts
  int restarts = 0;       // of the last solution, from a preconditioner that wasn't positive
  int modes = 0;
  point_layout points;
  block_level<float> fine;
  numbered_list<block_level<double>> coarse;
  dense_cholesky last;
  from_zero<double> last_vector;

  int levels() const { return coarse.count() + 1; }
};

}  // namespace tier::aggregation
