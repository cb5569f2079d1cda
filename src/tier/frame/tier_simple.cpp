// TIER_SIMPLE: codes from a file and a small store, and a second run where the first one failed.
#include "tier/frame/tier_simple.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

#include "tier/api/tier.h"
#include "tier/call/tier_main.h"
#include "tier/codes/parameter_file.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"
#include "tier/store/parameter_list.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

using control_values = std::map<std::string, double>;
const per_context<control_values> set_controls;  // what is in it was set

call_arguments codes_without_file() {
  call_arguments call;
  call.matrix = 22;
  call.eps = 1e-8;
  call.chktol = 0.0;
  call.idump = call.iout = 0;
  return call;
}

int read_codes(call_arguments& call) {
  for (const auto& [name, value] : set_controls()) set_control(call, name, value);
  const std::string file = input_file_name();
  if (file.empty()) return 0;
  call.file_was_read = true;
  return ierr_of([&] {
    read_assignments(file, call, true);
    return 0;
  });
}

bool was_successful(int ierr) {
  constexpr int first_warning_of_accelerators = -830;
  return ierr <= 0 && ierr > first_warning_of_accelerators;
}

/// Another value of a parameter during the second run, put back at its end.
template <class T>
class replaced {
 public:
  replaced(T& place, T value) : place_(place), former_(std::exchange(place, value)) {}
  ~replaced() { place_ = former_; }
  replaced(const replaced&) = delete;
  replaced& operator=(const replaced&) = delete;

 private:
  T& place_;
  T former_;
};

/// ncyc_2nd with BiCGstab, nsolve_2nd with ILUT.
int with_second_digit(int code, int digit) {
  constexpr int largest = 999999999;  // what a split looks at
  std::string digits = std::to_string(std::abs(std::clamp(code, -largest, largest)));
  if (digits.size() < 2) digits += '0';
  digits[1] = static_cast<char>('0' + digit);
  return std::atoi(digits.c_str());
}

int emergency_run(call_arguments call, run_results& results) {
  message("Last TIER run was not (fully) successful!", 1);
  message("trying ILU-BiCGstab now ...");
  message("... for original matrix ...");
  message("... first guess u reset to zero ...");
  constexpr int zero_guess = 1, set_up_once = code_of(run_kind::set_up_once), largest_power = 10000000;
  const replaced levelx(parm().levelx, parm().levelx_2nd), nrd(parm().nrd, parm().nrd_2nd),
      nru(parm().nru, parm().nru_2nd), nrc(parm().nrc, code_of(coarsest_solver::none)),
      fill(parm().lfil_smo, parm().lfil_2nd), finest(parm().clsolver_finest, 0), modify(parm().modify_mat, 0);
  const replaced drop(parm().droptol_smo, parm().droptol_2nd);
  const replaced force(parm().force_accel, parm().force_accel_2nd);
  const auto d = digits_of<4>(call.matrix);
  if (call.matrix > 0) call.matrix = 10 * d[1] + d[2];  // no transformation
  call.ncyc = with_second_digit(parm().ncyc_2nd, code_of(accelerator::bicgstab));
  call.nsolve = with_second_digit(parm().nsolve_2nd, code_of(smoother_kind::ilut));
  call.ifirst = zero_guess;
  if (digits_of<8>(call.iswtch)[1] != set_up_once) call.iswtch = set_up_once * largest_power + 1000000;
  return tier_main(call, results);
}

}  // namespace

void reset_controls_of_simple() { set_controls().clear(); }

}  // namespace tier

void TIER_SETCONTROL(const char* name, const int* length, const double* value) {
  const std::string key(tier::trimmed({name, static_cast<std::size_t>(std::max(*length, 0))}));
  tier::call_arguments trial;
  if (!tier::set_control(trial, key, *value))
    tier::emergency_stop("Unknown or not settable parameter " + key);
  tier::set_controls()[key] = *value;
}

void TIER_SIMPLE(const int* nnu, const int* nna, const int* nsys, const int* ia, int* ja, double* a,
                 const double* f, double* u, const int* iu, const int* ndiu, const int* ip, const int* ndip,
                 const int* iscale, double* res_in, double* res_out, int* ncyc_done, int* ierr) {
  tier::call_arguments call = tier::codes_without_file();
  call.nnu = *nnu;
  call.nna = *nna;
  call.nsys = *nsys;
  call.ia = ia;
  call.ja = ja;
  call.a = a;
  call.f = f;
  call.u = u;
  call.iu = iu;
  call.ndiu = *ndiu;
  call.ip = ip;
  call.ndip = *ndip;
  call.res_in = *res_in;
  call.take_iscale(iscale);

  tier::run_results results;
  *ierr = tier::read_codes(call);
  if (*ierr == 0 && call.iswtch == 0)
    tier::info(tier::message_class::warning,
               "Nothing to do since iswtch=0: set it in the input file or by TIER_SETCONTROL (tier_simple)");
  if (*ierr == 0) *ierr = tier::tier_main(call, results);
  if (tier::parm().nsimple_emergency != 0 && !tier::was_successful(*ierr))
    *ierr = tier::emergency_run(call, results);
  *res_in = results.res_in;
  *res_out = results.res_out;
  *ncyc_done = results.ncyc_done;
}
