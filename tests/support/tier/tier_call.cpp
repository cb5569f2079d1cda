// Calls with captured output.
#include "support/tier/tier_call.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tier/api/tier.h"

namespace testing_support {

tier_call::tier_call(sparse_system system)
    : s(std::move(system)),
      nnu(s.n),
      nna(static_cast<int>(s.ja.size())),
      nsys(s.nsys),
      ndiu(static_cast<int>(s.iu.size())),
      ndip(static_cast<int>(s.ip.size())),
      iscale(static_cast<std::size_t>(s.nsys), 0) {
  s.u.resize(static_cast<std::size_t>(s.n), 0.0);
  if (s.f.empty()) s.f.assign(static_cast<std::size_t>(s.n), 1.0);
  iscale.resize(1000, 0);
}

void tier_call::run() {
  testing::internal::CaptureStdout();
  TIER(&nnu, &nna, &nsys, s.ia.data(), s.ja.data(), s.a.data(), s.f.data(), s.u.data(), s.iu.data(), &ndiu,
       s.ip.data(), &ndip, &matrix, iscale.data(), &res_in, &res_out, &ncyc_done, &ierr, &nsolve, &ifirst,
       &eps, &ncyc, &iswtch, &a_cmplx, &g_cmplx, &p_cmplx, &w_avrge, &chktol, &idump, &iout);
  said = testing::internal::GetCapturedStdout();
}

void tier_call::run_simple() {
  testing::internal::CaptureStdout();
  TIER_SIMPLE(&nnu, &nna, &nsys, s.ia.data(), s.ja.data(), s.a.data(), s.f.data(), s.u.data(), s.iu.data(),
              &ndiu, s.ip.data(), &ndip, iscale.data(), &res_in, &res_out, &ncyc_done, &ierr);
  said = testing::internal::GetCapturedStdout();
}

double tier_call::relative_residual() const {
  double residual = 0.0, norm = 0.0;
  for (std::size_t i = 0; i < s.f.size(); ++i) {
    double r = s.f[i];
    for (std::size_t p = position(s.ia[i]); p < position(s.ia[i + 1]); ++p)
      r -= s.a[p] * s.u[position(s.ja[p])];
    residual += r * r;
    norm += s.f[i] * s.f[i];
  }
  return std::sqrt(residual / norm);
}

tier_call poisson_call(int m) { return tier_call(five_point(m)); }

tier_call coupled_call(int m) { return tier_call(coupled(five_point(m), 2, -0.01)); }

}  // namespace testing_support
