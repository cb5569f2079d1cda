// Decoding of the coarsening codes and the report of what was chosen.
#include "tier/setup/setup_controls.h"

#include <array>
#include <cmath>
#include <string>

#include "tier/store/hierarchy.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr double no_limit = 1e70;
constexpr int all_levels = max_levels;

[[noreturn]] void illegal(const char* name) {
  fail(ierr_illegal_value, std::string("Illegal value of parameter <") + name + "> in (crsng_data)!");
}

void require(bool legal, const char* name) {
  if (!legal) illegal(name);
}

int levels_of_digit(int digit) { return digit == 9 ? all_levels : digit + 1; }

void decode_ncg(int ncg, setup_controls& s) {
  std::array<int, 6> field;
  int ndigit = 0;
  idec(ncg, 6, ndigit, field.data());
  s.ncgtyp = field[0];
  s.nred = field[1];
  s.nred_levels = levels_of_digit(field[2]);
  s.nxf_clean = field[3] == 0 ? 1 : field[3];
  s.npcol = field[4];
  s.reduce_steps = field[5] == 0 ? 1 : field[5];
  require(s.ncgtyp >= 1 && s.ncgtyp <= 5, "ncgtyp");
  require(s.nred <= 8, "nred");
  require(s.nxf_clean <= 2, "nxf_clean");
  require(s.npcol <= 2, "npcol");
}

void decode_nwt(int nwt, setup_controls& s) {
  std::array<int, 7> field;
  int ndigit = 0;
  idec(nwt, 7, ndigit, field.data());
  s.nwtint = field[0];
  s.itint = field[1];
  s.intlev = levels_of_digit(field[2]);
  require(s.nwtint >= 1 && s.nwtint <= 4, "nwtint");
  require(field[3] <= 1, "iall");
  s.iall = field[3];
}

}  // namespace

threshold_pair decode_thresholds(double value, double fallback) {
  const double x = value < 0.0 ? fallback : value;
  const double whole = std::floor(x), rest = x - whole;
  if (whole < 10.0) return {whole, rest};
  const double power = std::pow(10.0, std::floor(std::log10(whole)));
  const double exponent = std::floor(whole / power), mantissa = whole - exponent * power;
  return {mantissa * std::pow(0.1, exponent), rest};
}

setup_controls decode_setup(const controls& c) {
  setup_controls s;
  const threshold_pair cg = decode_thresholds(c.ecg, parm().ecg_default);
  const threshold_pair wt = decode_thresholds(c.ewt, parm().ewt_default);
  const threshold_pair tr = decode_thresholds(c.etr, parm().etr_default);
  require(cg.first < 1.0, "ecg1");
  require(cg.second < 1.0, "ecg2");
  require(wt.first == 0.0 || wt.first > 1.0, "ewt1");
  s.ecg1 = cg.first;
  s.ecg2 = cg.second;
  s.ewt1 = wt.first == 0.0 ? no_limit : wt.first;
  s.ewt2 = wt.second;
  s.etr1 = tr.first;
  s.etr2 = tr.second;
  decode_ncg(c.ncg, s);
  decode_nwt(c.nwt, s);
  return s;
}

}  // namespace tier
