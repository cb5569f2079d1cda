// The digit codes of a call by name. Codes enter as numbers, are checked and named once (codes/), and are
// named everywhere behind that; reports print their numbers.
#pragma once

namespace tier {

/// nstyp: what strong couplings and interpolation keep together.
enum class approach { by_variables = 1, by_unknowns = 2, by_points = 3 };

/// nint_force: interpolation of the unknowns of a point, where the approach is by points.
enum class point_interpolation { none = 0, separate = 1, same = 2, block_wise = 3 };

/// internal: what the primary matrix of a point-based approach is made from; 1, 2, 5 and 6 are not released.
enum class primary_matrix {
  of_primary_unknown = 0,
  distances = 1,
  positions = 2,
  norms_and_sum = 3,  // norms of blocks, on the diagonal the sum of the others
  norms = 4,
  test = 5,
  second_test = 6
};

/// nint_weights: where interpolation weights come from; all but `entries` are not released.
enum class weight_source {
  entries = 1,
  distances = 2,
  positions = 3,
  primary_entries = 4,
  spectral_norm = 5
};

/// nint_pat: pattern of interpolation, that of the matrix or (not released) of the primary matrix.
enum class weight_pattern { of_matrix = 1, of_primary_matrix = 2 };

/// ncgtyp: which couplings of a row are strong; setup/rwsrt.h tells how each finds them.
enum class strong_kind {
  negative = 1,
  negative_else_largest = 2,
  eliminated_strictly = 3,  // positive couplings are eliminated first
  eliminated = 4,
  eliminated_else_largest = 5
};

constexpr bool eliminates(strong_kind kind) { return kind >= strong_kind::eliminated_strictly; }

/// nxf_clean: undecided variables that become C at the end of the first pass.
enum class clean_up_kind { without_f_neighbour = 1, all = 2 };

/// nwtint
enum class interpolation_kind { direct = 1, standard = 2, extended = 3, multipass = 4 };

/// First digit of ntr: limits of the truncation of an interpolation row.
enum class truncation { none = 0, one_limit = 1, limit_per_sign = 2 };

/// prim_norm: the norm of a block of a point.
enum class block_norm_kind { frobenius = 0, row_sum = 1, largest = 2 };

/// nxtyp, nxtyp_coarse
enum class smoother_kind {
  gauss_seidel = 0,
  ilu0 = 1,
  ilut = 2,
  ilutp = 3,
  block_gauss_seidel = 5,  // by points
  block_ilu0 = 6
};

/// igam: the cycle, or a method on level 1 alone.
enum class cycle_kind { v = 1, f = 2, w = 3, vv = 4, diagonal = 5, incomplete_factors = 6 };

constexpr bool is_one_level(cycle_kind cycle) {
  return cycle == cycle_kind::diagonal || cycle == cycle_kind::incomplete_factors;
}

/// ncgrad
enum class accelerator { none = 0, cg = 1, bicgstab = 2, gmres = 3, flexible_cg = 4 };

constexpr bool needs_symmetry(accelerator method) {
  return method == accelerator::cg || method == accelerator::flexible_cg;
}

/// ntyp_cg: the ratio of conjugate gradients, by Fletcher and Reeves or by Polak and Ribiere.
enum class cg_ratio { fletcher_reeves = 1, polak_ribiere = 2 };

/// nstar_typ: minimisation after the correction, over its direction or that of the next level too.
enum class star_cycle { none = 0, first_direction = 1, first_direction_too = 2, two_directions = 3 };

/// nrc
enum class coarsest_solver {
  smoothing = 1,
  ilu_cg = 2,
  ilut_bicgstab = 3,
  diagonal_cg = 4,
  diagonal_bicgstab = 5,
  full_gauss = 6,
  sparse_gauss = 7,
  least_squares = 8,
  of_user = 9,
  lapack = 10,
  not_served = 11,
  none = 99
};

constexpr bool is_iterative(coarsest_solver method) {
  return method >= coarsest_solver::smoothing && method <= coarsest_solver::diagonal_bicgstab;
}

/// iswit
enum class run_kind {
  nothing = 0,
  reuse_all = 1,
  not_released = 2,
  new_operators = 3,
  set_up_and_keep = 4,
  set_up_once = 5,
  automatic = 6,
  automatic_operators = 7,
  automatic_reuse = 8,
  not_released_either = 9
};

/// norm_typ
enum class norm_kind { euclidean = 0, sum = 1, largest = 2, energy = 3 };

/// isym; half storage is symmetric
enum class symmetry { symmetric = 1, general = 2 };

/// iforce0: what is done to the matrix before set-up; 1, 3, 4, 5 and 9 are not released.
enum class transformation { none = 0, remove_zeros = 2, scale_rows = 6, scale_columns = 7 };

/// The number of a choice.
template <class Choice>
constexpr int code_of(Choice choice) {
  return static_cast<int>(choice);
}

}  // namespace tier
