// The control values of one call, decoded and checked once at the door.
// Written by tier_input (and solve_data, crsng_data for what is theirs); read by set-up and solution.
#pragma once

#include <cstdint>

#include "tier/store/choices.h"
#include "tier/store/numbered.h"
#include "tier/store/work_arrays.h"

namespace tier {

struct controls {
  // system
  int nnu = 0, nna = 0, nsys = 1;
  int npnts = 0;  // largest entry of ip, 0 without ip
  bool has_ip = false;
  symmetry isym = symmetry::general;
  int irow0 = 2;
  bool half_stored = false;  // the caller stores one triangle of a symmetric matrix
  transformation iforce0 = transformation::none;
  numbered<int, 1000> iscale{};  // [1..nsys] 1: function fixed only up to a constant

  // approach (nsolve)
  approach nstyp = approach::by_variables;
  point_interpolation nint_force = point_interpolation::none;
  smoother_kind nxtyp = smoother_kind::gauss_seidel;
  primary_matrix internal = primary_matrix::of_primary_unknown;
  int nprim = 0;  // the primary unknown, 0: none
  bool dummy_primary = false;
  weight_source nint_weights = weight_source::entries;
  weight_pattern nint_pat = weight_pattern::of_matrix;

  // run (iswtch)
  run_kind iswit = run_kind::set_up_once;
  int iextent = 1, n_default = 40, scratch_unit = 31;
  norm_kind norm_typ = norm_kind::euclidean;

  // cycling (ncyc)
  cycle_kind igam = cycle_kind::v;
  accelerator ncgrad = accelerator::cg;
  int nkdim = 30, ncycle = 0;
  bool negative_ncyc = false;  // the K-cycle was asked for
  double eps = 0.0;
  int ifirst = 0;

  // strategy, user values over the table of n_default
  int levelx = 25, nptmn = 100;
  bool coarse_trace = false;  // levelx was negative
  int nrd = 131, nru = 131;
  coarsest_solver nrc = coarsest_solver::sparse_gauss;
  int ncg = 5, nwt = 2, ntr = 1, np_opt = 0;
  double ecg = 21.25, ewt = 0.2, etr = 12.2;
  double a_cmplx = 2.5, g_cmplx = 1.8, p_cmplx = 1.8, w_avrge = 2.5, b_cmplx = 2.0, ib_cmplx = 2.0;
  double galerkin_eps = 0.0;  // truncation limit of coarse operators from ntr, 0: none
  truncation ntr1 = truncation::one_limit;
  int ntyp_galerkin = 0;  // 1..6 after resolution

  // accelerators and stopping
  cg_ratio ntyp_cg = cg_ratio::fletcher_reeves;
  int inner_accel = 1, iter_pre = 0;
  star_cycle nstar_typ = star_cycle::none;
  int ndyn_smo = 0;
  numbered<int, 5> icrits{};  // [1..4] digits
  int iauto_stop_level = 0, num_old_res = 0, num_old_apps = 0;
  bool one_level = false;  // a one-level method, levelx 1, or nnu at most nptmn

  // printing
  int dump_level = 0;  // level of idump, -1: off
  int out_level = 0;   // level of iout, -1: off
  int show_un_res = 0;
  bool residual_check = false;  // the coarse-level residual check may speak
};

/// What a call gives back beside u.
struct run_results {
  double res_in = -1.0, res_out = -1.0;
  double res0 = -1.0;  // residual after cycle ncyc_start, for the average reduction; -1: not reached
  int ncyc_done = 0;
};

/// Splits |value| into `nnum` fields as the digit codes want it (see TIER_IDEC): digits[0] is field 1.
void idec(int value, int nnum, int& ndigit, int* digits);

/// The primary matrix is to be made from norms of the blocks of points.
inline bool norm_based(const controls& c) {
  return c.internal == primary_matrix::norms_and_sum || c.internal == primary_matrix::norms;
}

/// Digits of the modification of the matrix in force: modify_mat, or what iforce0 6 and 7 stand for; 0 for
/// none.
int modification(const controls& c);

/// Whether the system as it is solved is symmetric: scaling of rows or columns ends that.
bool symmetric_as_solved(const controls& c);

}  // namespace tier
