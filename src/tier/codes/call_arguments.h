// The arguments of one call of TIER: the caller's arrays and, by value, the codes that a parameter file may
// replace. Filled by the entries, read by tier_input and tier_main.
#pragma once

#include <algorithm>

#include "tier/store/numbered.h"

namespace tier {

constexpr int most_functions = 999;

struct call_arguments {
  int nnu = 0, nna = 0, nsys = 1;
  const int* ia = nullptr;
  int* ja = nullptr;
  double* a = nullptr;
  const double* f = nullptr;
  double* u = nullptr;
  const int* iu = nullptr;
  int ndiu = 0;
  const int* ip = nullptr;
  int ndip = 0;

  int matrix = 0;
  numbered<int, most_functions + 1> iscale{};  // [1..nsys]
  double res_in = -1.0;
  int nsolve = 0, ifirst = 0;
  double eps = 0.0;
  int ncyc = 0, iswtch = 0;
  double a_cmplx = 0.0, g_cmplx = 0.0, p_cmplx = 0.0, w_avrge = 0.0;
  double chktol = -1.0;
  int idump = -1, iout = -1;

  bool file_was_read = false;  // codes and parameters come from an input file already

  /// Copies iscale(1..nsys); nothing where nsys is out of range, as its length isn't known then.
  void take_iscale(const int* given) {
    if (nsys >= 1 && nsys <= std::min(nnu, most_functions)) std::copy_n(given, nsys, iscale.begin() + 1);
  }
};

}  // namespace tier
