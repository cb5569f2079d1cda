// The door of the solver: what comes in as digit codes leaves as checked control values.
#include "tier/codes/tier_input.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "tier/codes/approach_code.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameter_list.h"
#include "tier/store/parameters.h"
#include "tier/store/threads.h"

namespace tier {

namespace {

constexpr int most_integer = std::numeric_limits<int>::max();

int signed_level(int code) {
  const int level = digits_of<2>(code)[1];
  return code < 0 ? -level : level;
}

void read_print_codes(controls& c, const call_arguments& call) {
  c.residual_check = parm().mode_mess >= -1 && (call.iout >= 0 || call.idump >= 0);
  for (const auto& [name, code] : {std::pair{"idump", call.idump}, {"iout", call.iout}}) {
    if (parm().mode_mess >= 0 || code < 0) continue;
    message(std::string(" +++ WARNG: ") + name + ">=0 but mode_mess<0 ! INCONSISTENCY!");
    message("            Change to mode_mess=0 to see all MESSG/WARNG/ERRORs!");
  }
  c.dump_level = signed_level(call.idump);
  c.out_level = signed_level(call.iout);
}

void read_cycle_options(controls& c) {
  require_legal(parm().inner_accel >= 1 && parm().inner_accel <= 9, "inner_accel");
  require_legal(parm().nstar_typ >= 0 && parm().nstar_typ <= code_of(star_cycle::two_directions),
                "nstar_typ");
  const int sweeps = parm().ndyn_smo;
  require_legal(sweeps == 0 || sweeps == 10 || sweeps == 11 || sweeps == 20 || sweeps == 21, "ndyn_smo");
  c.inner_accel = parm().inner_accel;
  c.nstar_typ = star_cycle{parm().nstar_typ};
  c.ndyn_smo = sweeps;
}

void apply_strategy(controls& c) {
  switch (c.n_default) {
#define TIER_STRATEGY(n_default, nwt_value, ncg_value) \
  case n_default:                                      \
    c.nwt = nwt_value;                                 \
    c.ncg = ncg_value;                                 \
    return;
#include "tier/codes/strategy.def"
    default:
      require_legal(false, "n_default");
  }
}

void read_run_code(controls& c, const call_arguments& call) {
  const auto d = digits_of<8>(call.iswtch);
  c.iswit = run_kind{d[1]};
  c.iextent = d[2];
  require_legal(c.iextent <= 3, "iextent");
  c.n_default = 10 * d[3] + d[4];
  if (c.n_default == 0) c.n_default = 40;
  if (c.n_default == 99) c.n_default = 20;
  require_legal(d[5] <= code_of(norm_kind::energy), "norm_typ");
  c.norm_typ = norm_kind{d[5]};
  const int unit = 10 * d[6] + d[7];
  c.scratch_unit = unit == 0 ? parm().ioscratch_default : unit;
  apply_strategy(c);
  if (c.iswit == run_kind::not_released || c.iswit == run_kind::not_released_either)
    not_released("iswit=" + std::to_string(code_of(c.iswit)));
}

template <class T>
void take(T user, T& value) {
  if (is_set(user)) value = user;
}

void take_threshold(double user, double fallback, double& value) {
  if (is_set(user)) value = user < 0.0 ? fallback : user;
}

void read_user_strategy(controls& c) {
  take(parm().levelx, c.levelx);
  take(parm().nptmn, c.nptmn);
  take(parm().ncg, c.ncg);
  take(parm().nwt, c.nwt);
  take(parm().ntr, c.ntr);
  take(parm().np_opt, c.np_opt);
  take_threshold(parm().ecg, parm().ecg_default, c.ecg);
  take_threshold(parm().ewt, parm().ewt_default, c.ewt);
  take_threshold(parm().etr, parm().etr_default, c.etr);
  c.coarse_trace = c.levelx < 0;
  c.levelx = std::abs(std::max(c.levelx, -most_integer));
  if (parm().clsolver_finest != 0) c.levelx = 1;  // its solver works on the finest level
}

/// A code below 10 is a plain number of passes over C, then F.
int smoothing_code(int code) {
  code = std::max(code, -most_integer);  // its sign can be changed
  if (parm().force_accel || code == 0 || std::abs(code) >= 10) return code;
  return code < 0 ? -(-code * 100 + 31) : code * 100 + 31;
}

void read_smoothing_codes(controls& c, const call_arguments& call) {
  const smoother_kind smoother{digits_of<9>(approach_or_default(call.nsolve))[2]};
  const bool gauss_seidel =
      smoother == smoother_kind::gauss_seidel || smoother == smoother_kind::block_gauss_seidel;
  const bool plain_sweeps = c.levelx == 1 && !parm().force_accel && gauss_seidel;
  c.nrd = c.nru = plain_sweeps ? 12 : 131;
  take(parm().nrd, c.nrd);
  take(parm().nru, c.nru);
  c.nrd = smoothing_code(c.nrd);
  c.nru = smoothing_code(c.nru);
}

/// 1 to 11, two digits from 60 stand for their first one, 99 is no solution on the coarsest level.
void read_coarsest_solver(controls& c) {
  constexpr int first_of_two_digits = 60, none = code_of(coarsest_solver::none);
  int nrc = is_set(parm().nrc) && parm().nrc != 0 ? parm().nrc : code_of(coarsest_solver::sparse_gauss);
  require_legal((nrc >= code_of(coarsest_solver::smoothing) && nrc <= code_of(coarsest_solver::not_served)) ||
                    (nrc >= first_of_two_digits && nrc <= none),
                "nrc");
  if (nrc >= first_of_two_digits && nrc < none) nrc /= 10;
  c.nrc = coarsest_solver{nrc};
}

double estimate(double given, double fallback, const char* name, bool multilevel) {
  require_legal(std::isfinite(given), name);
  return multilevel && given < 1.0 ? std::max(1.1, fallback) : given;
}

void read_complexities(controls& c, const call_arguments& call) {
  const bool aggressive = digits_of<6>(c.ncg)[2] > 0;
  const int cycle = digits_of<4>(call.ncyc == 0 ? parm().ncyc_default : call.ncyc)[1];
  const bool multilevel = cycle <= code_of(cycle_kind::vv);
  const auto choose = [&](double given, double usual, double with_aggressive, const char* name) {
    return estimate(given, aggressive ? with_aggressive : usual, name, multilevel);
  };
  c.a_cmplx = choose(call.a_cmplx, parm().a_cmplx_default, parm().a_cmplx_agg_default, "a_cmplx");
  c.g_cmplx = choose(call.g_cmplx, parm().g_cmplx_default, parm().g_cmplx_agg_default, "g_cmplx");
  c.p_cmplx = choose(call.p_cmplx, parm().p_cmplx_default, parm().p_cmplx_agg_default, "p_cmplx");
  c.w_avrge = choose(call.w_avrge, parm().w_avrge_default, parm().w_avrge_agg_default, "w_avrge");
  c.b_cmplx = choose(parm().b_cmplx, parm().b_cmplx_default, parm().b_cmplx_agg_default, "b_cmplx");
  c.ib_cmplx = choose(parm().ib_cmplx, parm().ib_cmplx_default, parm().ib_cmplx_agg_default, "ib_cmplx");
}

void read_matrix_code(controls& c, const call_arguments& call) {
  require_legal(call.matrix >= 1, "matrix");
  const auto d = digits_of<4>(call.matrix);
  require_legal(d[1] >= 1 && d[1] <= 3, "isym");
  if (call.nsys == 1) require_legal(d[2] == 1 || d[2] == 2, "irow0");
  constexpr int half_stored = 3;
  c.half_stored = d[1] == half_stored;
  c.isym = c.half_stored ? symmetry::symmetric : symmetry{d[1]};
  c.irow0 = d[2];
  c.iforce0 = transformation{d[3]};
}

void read_automatic_stop(controls& c) {
  const auto d = digits_of<9>(parm().iauto_stop);
  require_legal(d[1] <= 1, "iauto_stop");
  c.iauto_stop_level = parm().iauto_stop < 0 ? -d[1] : d[1];
  if (c.iauto_stop_level != 0) {
    c.num_old_res = 10 * d[3] + d[4];
    c.num_old_apps = 10 * d[5] + d[6];
  }

  const bool approximations_decide = c.icrits[3] != 0;
  if (approximations_decide && c.num_old_apps < 1) {
    c.num_old_apps = 1;
    warn(warn_setting_adjusted, "App-criterion selected but num_old_apps < 1! Reset: num_old_apps=1");
    if (c.iauto_stop_level < 1) {
      c.iauto_stop_level = 1;
      c.num_old_res = 3;
      info(message_class::warning, "Since iauto_stop_level < 1, additional resets:");
      info(message_class::warning, "      iauto_stop_level=1 and num_old_res=3");
    }
  }
  if (c.num_old_res < c.num_old_apps) {
    c.num_old_res = c.num_old_apps;
    warn(warn_setting_adjusted, "num_old_res < num_old_apps! Reset: num_old_res=num_old_apps");
  }
}

void read_stopping(controls& c) {
  const auto d = digits_of<4>(parm().icrits);
  require_legal((d[1] == 1 || d[1] == 2) && d[2] + d[3] + d[4] > 0, "icrits");
  std::copy_n(d.begin(), c.icrits.size(), c.icrits.begin());
  read_automatic_stop(c);

  const auto accel = digits_of<3>(parm().ntyp_accel);
  require_legal(accel[1] <= 1 && accel[2] <= 2, "ntyp_accel");
  c.ntyp_cg = accel[1] == 0 || accel[2] == 0 ? cg_ratio::fletcher_reeves : cg_ratio{accel[2]};
}

void read_operator_options(controls& c) {
  require_legal(parm().ntyp_galerkin >= 0 && parm().ntyp_galerkin <= 6, "ntyp_galerkin");
  c.ntyp_galerkin = parm().ntyp_galerkin != 0 ? parm().ntyp_galerkin : max_threads() > 1 ? 6 : 1;
  require_legal(parm().prim_norm >= 0 && parm().prim_norm <= code_of(block_norm_kind::largest), "prim_norm");
  require_legal(parm().gmax_multipass >= 0.0 && parm().gmax_multipass <= 1.0, "gmax_multipass");
}

void check_ranges(const controls& c, const call_arguments& call) {
  require_in_range(call.nsys >= 1 && call.nsys <= most_functions, "nsys");
  require_in_range(call.nnu >= 1 && call.nnu <= call.nna, "nnu");
  require_in_range(call.nna < max_entries, "nna");
  require_in_range(call.nsys <= call.nnu, "nsys");
  require_legal(!std::isnan(call.eps) && !std::isinf(call.eps), "eps");
  require_legal(!std::isnan(call.chktol), "chktol");
  require_legal(c.levelx >= 1, "levelx");
  require_legal(c.ncg >= 1, "ncg");
  require_legal(c.nwt >= 1, "nwt");
  require_legal(c.ntr >= 0, "ntr");
  require_legal(c.ecg > 0.0, "ecg");
  require_legal(c.ewt >= 0.0, "ewt");
  require_legal(c.etr >= 0.0, "etr");
  require_legal(parm().iter_pre >= 0, "iter_pre");
}

void read_functions(controls& c, const call_arguments& call) {
  c.nnu = call.nnu;
  c.nna = call.nna;
  c.nsys = call.nsys;
  c.show_un_res = parm().show_un_res;
  if (c.nsys == 1) {
    c.iscale[1] = 2 - c.irow0;
    if (c.show_un_res != 0)
      info(message_class::note, "Parameter <show_un_res> reset to 0 (because of nsys=1) !");
    c.show_un_res = 0;
    return;
  }
  for (int i = 1; i <= c.nsys; ++i) {
    require_legal(call.iscale[i] == 0 || call.iscale[i] == 1, "iscale");
    c.iscale[i] = call.iscale[i];
  }
  if (c.show_un_res < 0)
    info(message_class::note, "Parameter <show_un_res> lower than 0 --> reset to 0 !");
  else if (c.show_un_res > c.nsys)
    info(message_class::note, "Parameter <show_un_res> too large --> reset to nsys !");
  c.show_un_res = std::clamp(c.show_un_res, 0, c.nsys);
}

void read_truncation(controls& c) {
  const auto d = digits_of<4>(c.ntr);
  require_legal(d[1] <= code_of(truncation::limit_per_sign), "ntr");
  const int exponent = 10 * d[2] + d[3];
  c.ntr1 = truncation{d[1]};
  c.galerkin_eps = exponent == 0 ? 0.0 : std::pow(0.1, exponent);
}

void read_cycle_code(controls& c, const call_arguments& call) {
  const int code = call.ncyc == 0 ? parm().ncyc_default : call.ncyc;
  const auto d = digits_of<4>(code);
  c.negative_ncyc = code < 0;
  require_legal(d[1] >= code_of(cycle_kind::v) && d[1] <= code_of(cycle_kind::incomplete_factors), "igam");
  c.igam = cycle_kind{d[1]};
  constexpr int last_method = code_of(accelerator::flexible_cg);
  require_legal(d[2] <= last_method, "ncgrad");
  const int method = d[2] == 0 ? parm().ncgrad_default : d[2];
  require_legal(method >= 0 && method <= last_method, "ncgrad_default");
  c.ncgrad = accelerator{method};
  constexpr int largest_digit = 9, largest_dimension = 20;
  c.nkdim = d[3] == 0 ? parm().nkdim_default : d[3] == largest_digit ? largest_dimension : d[3] + 1;
  require_legal(c.nkdim >= 1, "nkdim_default");
  c.ncycle = std::max(d[4], parm().ncyc_min);
  c.iter_pre = parm().iter_pre;
  c.eps = call.eps;
  c.ifirst = call.ifirst;
}

/// Conjugate gradients ask for symmetry of the matrix and of the cycle.
void adapt_to_symmetry(controls& c) {
  if (!symmetric_as_solved(c)) {
    if (c.norm_typ == norm_kind::energy) {
      c.norm_typ = norm_kind::euclidean;
      parm().ntake_res_in = 0;
      info(message_class::note, "Switched to L2-NORM (reason: matrix non-symmetric)!");
    }
    if (!parm().force_accel && c.ncgrad == accelerator::cg) c.ncgrad = accelerator::bicgstab;
    if (!parm().force_accel && c.ncgrad == accelerator::flexible_cg) c.ncgrad = accelerator::gmres;
  }
  if (!parm().force_accel && needs_symmetry(c.ncgrad)) {
    if (c.nrd != 0)
      c.nru = -c.nrd;
    else
      c.nrd = -c.nru;
  }
}

void check_one_level(controls& c) {
  c.one_level = is_one_level(c.igam) || c.levelx == 1 || c.nnu <= c.nptmn;
  require_consistent(c.igam != cycle_kind::incomplete_factors || c.isym == symmetry::symmetric, "igam");
  require_consistent(!is_one_level(c.igam) || !c.half_stored, "igam");
  if (c.negative_ncyc && !c.one_level) not_released("ncyc<0: K-cycle");
}

void check_further_parameters() {
  for (const auto& [value, name] : {std::pair{parm().cset_lastpnt, "cset_lastpnt"},
                                    {parm().cset_lessvars, "cset_lessvars"},
                                    {parm().cset_longrow, "cset_longrow"},
                                    {parm().cset_unknown, "cset_unknown"},
                                    {parm().cset_unknown1, "cset_unknown1"},
                                    {parm().cset_unknown2, "cset_unknown2"},
                                    {parm().cset_zerodiag, "cset_zerodiag"}})
    require_legal(value >= -5 && value <= 2, name);
  const int order = parm().cl_order;
  require_legal((order >= 0 && order <= 8) || order == 33 || order == 34 || order == 55 || order == 99,
                "cl_order");
  require_legal(parm().min_cl_size >= 0, "min_cl_size");
  require_legal(parm().max_cl_size >= 0, "max_cl_size");
  require_legal(parm().iordered_omp >= 0, "iordered_omp");
  if (parm().clsolver_finest > 1) not_released("clsolver_finest>1");
  if (parm().nblk_solve < 0 || parm().nblk_solve > 2) not_released("nblk_solve: Schwarz blocks");
}

void check_reals() {
  for (const parameter_entry& p : parameter_list())
    if (const auto* real = std::get_if<double parameters::*>(&p.member))
      require_legal(std::isfinite(parm().**real), p.name);
}

}  // namespace

void check_unused_parameters() {
  for (const parameter_entry& p : parameter_list()) {
    if (p.at_default()) continue;
    if (p.effect == parameter_effect::closed) not_released(p.name);
    if (p.effect == parameter_effect::idle)
      warn(warn_setting_adjusted, "Parameter <" + std::string(p.name) + "> has no effect in this version!");
  }
}

controls tier_input(const call_arguments& call) {
  controls c;
  read_print_codes(c, call);
  check_reals();
  read_cycle_options(c);
  read_run_code(c, call);
  read_user_strategy(c);
  read_smoothing_codes(c, call);
  read_coarsest_solver(c);
  read_complexities(c, call);
  read_matrix_code(c, call);
  read_stopping(c);
  read_operator_options(c);
  check_ranges(c, call);
  read_functions(c, call);
  read_truncation(c);
  read_cycle_code(c, call);
  read_approach(c, call);
  adapt_to_symmetry(c);
  check_one_level(c);
  check_further_parameters();
  check_unused_parameters();
  return c;
}

}  // namespace tier
