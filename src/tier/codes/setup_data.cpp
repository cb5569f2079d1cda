// Options of a set-up.
#include "tier/codes/setup_data.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr double no_limit = 1e70;

void require(bool legal, const char* name) {
  if (!legal)
    fail(ierr_illegal_value, std::string("Illegal value of parameter <") + name + "> in (crsng_data)!");
}

int levels_of_digit(int digit) {
  constexpr int all = 9;
  return digit == all ? max_levels : digit + 1;
}

/// Strength and splitting: ncg.
void decode_ncg(int ncg, setup_options& o) {
  constexpr int most_paths = 8, last_pass = 2;  // paths above 4 are legal, but not released
  constexpr double limit_of_pass[] = {0.0, 1.0, 0.75};
  const auto field = digits_of<6>(ncg);
  const int kind = field[1], clean_up = field[4] == 0 ? 1 : field[4], pass = field[5];
  require(kind >= code_of(strong_kind::negative) && kind <= code_of(strong_kind::eliminated_else_largest),
          "ncgtyp");
  require(field[2] <= most_paths, "nred");
  require(clean_up <= code_of(clean_up_kind::all), "nxf_clean");
  require(pass <= last_pass, "npcol");
  o.strength.kind = strong_kind{kind};
  o.splitting.paths = field[2];
  o.splitting.aggressive_levels = levels_of_digit(field[3]);
  o.splitting.first_pass.clean_up = clean_up_kind{clean_up};
  o.splitting.second_pass_limit = limit_of_pass[pass];
  o.splitting.reduce_steps = field[6] == 0 ? 1 : field[6];
}

/// Interpolation: nwt.
void decode_nwt(int nwt, setup_options& o) {
  const auto field = digits_of<7>(nwt);
  const int iall = field[4];
  require(
      field[1] >= code_of(interpolation_kind::direct) && field[1] <= code_of(interpolation_kind::multipass),
      "nwtint");
  require(iall <= 1, "iall");
  o.interpolation.kind = interpolation_kind{field[1]};
  o.improvement.steps = field[2];
  o.improvement.levels = levels_of_digit(field[3]);
  if (iall != 0) warn(warn_setting_adjusted, "Parameter <iall> has no effect (crsng_data)!");
}

void decode_limits(const controls& c, setup_options& o) {
  const threshold_pair cg = decode_thresholds(c.ecg), wt = decode_thresholds(c.ewt),
                       tr = decode_thresholds(c.etr);
  require(cg.first < 1.0, "ecg1");
  require(cg.second < 1.0, "ecg2");
  require(wt.first == 0.0 || wt.first > 1.0, "ewt1");
  o.strength.ecg1 = cg.first;
  o.strength.ecg2 = cg.second;
  o.strength.ewt1 = wt.first == 0.0 ? no_limit : wt.first;
  o.strength.ewt2 = o.interpolation.ewt2 = wt.second;
  o.strength.eps = std::max(parm().eps_dd, cg.first);
  o.interpolation.etr = tr.first;
  o.improvement.truncation = tr.second;
}

primary_options primary_of(const controls& c) {
  primary_options o;
  o.nprim = c.nprim;
  o.norm = block_norm_kind{parm().prim_norm};
  o.sum_diagonal = c.internal == primary_matrix::norms_and_sum;
  if (parm().ntr_prim != 0) o.truncation = std::pow(10.0, -std::abs(parm().ntr_prim));
  return o;
}

coarsening_limits limits_of(const controls& c) {
  coarsening_limits o;
  o.most_levels = std::min({std::abs(c.levelx), parm().max_level, max_levels});
  o.small = c.nptmn;
  o.largest_direct = parm().nptmax;
  o.otherwise = coarsest_solver{parm().nrc_emergency};
  o.density = parm().densx;
  o.slow = parm().slow_coarsening;
  o.too_slow = parm().term_coarsening;
  o.enforced = parm().lev_coarsening_too_slow;
  return o;
}

}  // namespace

threshold_pair decode_thresholds(double value) {
  const double whole = std::floor(value), rest = value - whole;
  if (whole < 10.0) return {whole, rest};
  const double power = std::pow(10.0, std::floor(std::log10(whole)));
  const double exponent = std::floor(whole / power), mantissa = whole - exponent * power;
  return {mantissa * std::pow(0.1, exponent), rest};
}

galerkin_options options_of_operators(const controls& c) {
  // With a structure that re-starts share, the pattern must not depend on values.
  const bool for_re_starts = c.iswit == run_kind::new_operators || c.iswit == run_kind::set_up_and_keep;
  galerkin_options o;
  o.keeps_zeros = parm().glk_mult_zeros || (parm().struct_ident && for_re_starts);
  o.variant = opdfn_variant{c.ntyp_galerkin};
  const bool dynamic = o.variant == opdfn_variant::dynalloc || o.variant == opdfn_variant::dynalloc_mg;
  if (dynamic && o.keeps_zeros) o.variant = opdfn_variant::lists;
  o.truncation = c.galerkin_eps;
  o.symmetric = symmetric_as_solved(c);
  o.most_bad_diagonals = parm().neg_diag;
  o.most_repairs = parm().maxop_restart;
  return o;
}

setup_options options_of_setup(const controls& c) {
  setup_options o;
  decode_limits(c, o);
  decode_ncg(c.ncg, o);
  decode_nwt(c.nwt, o);
  o.primary = primary_of(c);
  o.splitting.first_pass.unusable_become_c = parm().iset_vio_dd >= 1;
  o.splitting.unusable_points_become_c = parm().vio_dd != 0;
  o.splitting.threads = parm().icolor_omp;
  o.interpolation.limits = c.ntr1;
  o.interpolation.unit_row_sum = parm().nint_rowsum1 == 1;
  if (parm().numtry_max_set > 0) o.interpolation.most_attempts = parm().numtry_max_set;
  o.interpolation.largest_coarse_share = parm().gmax_multipass;
  o.blocks_may_eliminate = parm().allow_elim == 1;
  o.galerkin = options_of_operators(c);
  o.limits = limits_of(c);
  o.prints_matrices = parm().mode_debug != 0;
  o.row_sum_code = parm().nint_rowsum1;
  return o;
}

}  // namespace tier
