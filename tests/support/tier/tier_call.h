// A call of TIER as an application makes it, with everything it says and returns.
// Used by the tests of the frame.
#pragma once

#include <string>

#include "support/tier/sparse_system.h"

namespace testing_support {

struct tier_call {
  explicit tier_call(sparse_system system);

  sparse_system s;
  int nnu, nna, nsys, ndiu, ndip;
  std::vector<int> iscale;
  int matrix = 22, nsolve = 0, ifirst = 1, ncyc = 1300100, iswtch = 5120, idump = -1, iout = -1;
  double eps = 1e-8, chktol = -1.0;
  double a_cmplx = 0.0, g_cmplx = 0.0, p_cmplx = 0.0, w_avrge = 0.0;

  double res_in = -7.0, res_out = -7.0;
  int ncyc_done = -7, ierr = -7;
  std::string said;  // standard output of the call

  void run();
  void run_simple();

  double relative_residual() const;  // |f - A u| / |f|, computed here
};

/// 12 x 12 points of a Poisson problem: more than one level with nptmn 20, one with the default.
tier_call poisson_call(int m = 12);

/// The same for two functions at each point, unknown-based.
tier_call coupled_call(int m = 12);

}  // namespace testing_support
