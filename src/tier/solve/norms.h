// Residual norms, whole and per function, each tested for overflow (210) and NaN (211).
// Called by the driver, the cycle's checks and the accelerators.
#pragma once

#include "tier/solve/vector_ops.h"
#include "tier/store/controls.h"
#include "tier/store/hierarchy.h"

namespace tier {

/// Norm of f - A u: sum or largest of the magnitudes, else Euclidean.
double resid(const level& l, const_vector f, const_vector u, norm_kind norm);

/// r <- f - A u and its norm, in one pass over the matrix.
double compute_residual_norm(const level& l, const_vector f, const_vector u, vector r, norm_kind norm);

/// Norm of a given residual vector.
double vector_norm(int n, const_vector r, norm_kind norm, const char* routine);

/// Norms of the residual's parts by function: by_function [1..nsys]; returns the norm of the whole.
double unknowns_resids(const level& l, const_vector f, const_vector u, int nsys, norm_kind norm,
                       vector by_function);

/// The sum or maximum `s` of a residual norm, tested: "Residual overflow caught in (routine)!" 210,
/// "NaN detected in (routine)!" 211; the square root for the Euclidean norms.
double finish_norm(double s, norm_kind norm, const char* routine);

}  // namespace tier
