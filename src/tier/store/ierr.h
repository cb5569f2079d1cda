// Every error and warning number that a call of TIER returns, with its name.
#pragma once

namespace tier {

constexpr int ierr_internal = 1;
constexpr int ierr_work_arrays_too_small = 10;
constexpr int ierr_illegal_value = 20;
constexpr int ierr_missing_variable = 30;
constexpr int ierr_bad_matrix = 40;
constexpr int ierr_inconsistent_input = 50;
constexpr int ierr_no_first_setup = 51;
constexpr int ierr_no_hierarchy = 52;
constexpr int ierr_changed_descriptor = 53;
constexpr int ierr_changed_size = 54;
constexpr int ierr_extension_failed = 60;
constexpr int ierr_allocation = 70;
constexpr int ierr_not_released = 80;
constexpr int ierr_setup_internal = 100;
constexpr int ierr_no_strong_connections = 120;
constexpr int ierr_interpolation = 140;
constexpr int ierr_galerkin_truncation = 152;
constexpr int ierr_solution_internal = 200;
constexpr int ierr_residual_overflow = 210;
constexpr int ierr_residual_nan = 211;
constexpr int ierr_block_pivot = 220;
constexpr int ierr_smoother_ilu0 = 230;
constexpr int ierr_smoother_ilut = 240;
constexpr int ierr_accelerator_ilu0 = 810;
constexpr int ierr_accelerator_ilut = 820;
constexpr int ierr_cg_breakdown = 830;
constexpr int ierr_bicgstab_breakdown = 840;
constexpr int ierr_gmres_breakdown = 850;
constexpr int ierr_singular_single = 900;
constexpr int ierr_coarsest_cg = 920;
constexpr int ierr_coarsest_bicgstab = 930;
constexpr int ierr_full_gauss = 960;
constexpr int ierr_sparse_gauss = 970;
constexpr int ierr_dense_direct = 980;

constexpr int warn_approach_changed = -1;
constexpr int warn_unknown_without_variable = -40;
constexpr int warn_setting_adjusted = -50;
constexpr int warn_memory_counters = -60;
constexpr int warn_slow_coarsening = -130;
constexpr int warn_multipass = -140;
constexpr int warn_cg_restart = -830;
constexpr int warn_cg_quasi_residual = -831;
constexpr int warn_cg_not_converged = -832;
constexpr int warn_bicgstab_quasi_residual = -841;
constexpr int warn_bicgstab_not_converged = -842;
constexpr int warn_bicgstab_restarts = -843;
constexpr int warn_gmres_quasi_residual = -851;
constexpr int warn_gmres_not_converged = -852;
constexpr int warn_cycles_not_converged = -862;
constexpr int warn_original_residual = -863;
constexpr int warn_coarsest_cg = -920;

}  // namespace tier
