// The numbers that only set-up and solution can return, each raised by a whole call.
#include "tier/store/ierr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/tier/systems.h"
#include "support/tier/tier_call.h"
#include "tier/store/parameters.h"
#include "tier/store/work_arrays.h"

namespace {

using testing::HasSubstr;
using testing_support::sparse_system;
using testing_support::tier_call;
using tier::parm;

/// [a b; c d], a diagonal block that the smoothers of blocks meet too: two functions at one point.
tier_call two_rows(double a, double b, double c, double d) {
  sparse_system s;
  s.add_row(a, {{2, b}});
  s.add_row(d, {{1, c}});
  s.iu = {1, 2};
  s.ip = {1, 1};
  s.f = {1.0, 0.0};
  tier_call call(s);
  parm().nrc = 99;  // nothing but smoother and accelerator
  return call;
}

tier_call singular() { return two_rows(1.0, 1.0, 1.0, 1.0); }
tier_call singular_block() {
  tier_call call = singular();
  call.nsys = 2;
  return call;
}

/// diag(1, -1), f = (1, 1): the first direction has (Ap,p) = 0.
tier_call zero_product() {
  tier_call call = two_rows(1.0, 0.0, 0.0, -1.0);
  call.s.f = {1.0, 1.0};
  call.matrix = 12;
  return call;
}

tier_call cube() { return tier_call(testing_support::seven_point(7)); }
tier_call points() { return testing_support::coupled_call(); }
tier_call poisson() { return testing_support::poisson_call(); }
struct Raised {
  const char* name;
  int ierr;
  tier_call (*make)();
  void (*choose)(tier_call&);
  const char* words;
};

class Number : public testing::TestWithParam<Raised> {};

TEST_P(Number, ComesWithItsWords) {
  tier_call call = GetParam().make();
  GetParam().choose(call);

  call.run();

  EXPECT_EQ(call.ierr, GetParam().ierr) << call.said;
  EXPECT_THAT(call.said, HasSubstr(GetParam().words));
  EXPECT_EQ(std::pair(tier::memory().nisum, tier::memory().ndsum),
            std::pair(std::int64_t{0}, std::int64_t{0}));
}

INSTANTIATE_TEST_SUITE_P(
    Calls, Number,
    testing::Values(
        Raised{"Extension", 60, cube, [](tier_call& x) { parm().nptmn = 10, parm().ihuge = x.nna; },
               "Memory extension failed (integer overflow for size of array "},
        Raised{"BlockElimination", 140, points,
               [](tier_call& x) { x.nsolve = 50401, parm().nptmn = 10, parm().allow_elim = 0; },
               "eelim=.true. but allow_elim.ne.1 in (pbint1)"},
        Raised{"BlockIlu", 200, singular_block, [](tier_call& x) { x.nsolve = 26; },
               "Error in BLOCK ILU smoother in (smoother)"},
        Raised{"BlockPivot", 220, singular_block, [](tier_call& x) { x.nsolve = 25; },
               "Zero pivot in block relaxation (relx_pgs)!"},
        Raised{"SmootherIlu0", 230, singular, [](tier_call& x) { x.nsolve = 11; },
               "(M)ILU(0) decomposition failed: smoothing (ilux_prepare)!"},
        Raised{"SmootherIlut", 240, singular, [](tier_call& x) { x.nsolve = 12; },
               "ILUT decomposition failed: smoothing (ilux_prepare)!"},
        Raised{"AcceleratorIlu0", 810, singular, [](tier_call& x) { x.matrix = 12, x.ncyc = 6100100; },
               "ILU(0) decomposition failed on level 1 (old_cgc)!"},
        Raised{"BicgstabIlut", 820, singular, [](tier_call& x) { x.matrix = 12, x.ncyc = 6200100; },
               "ILUT decomposition failed in (cgstab)"},
        Raised{"GmresIlut", 820, singular, [](tier_call& x) { x.matrix = 12, x.ncyc = 6300100; },
               "ILUT decomposition failed on level 1 (gmres)"},
        Raised{"CgRestart", -830, zero_product, [](tier_call& x) { x.ncyc = 5100100; },
               "Modification of initial guess (old_cgc)."},
        Raised{"CgResidual", -831, poisson,
               [](tier_call& x) { x.matrix = 12, x.ncyc = 5100100, parm().factor_quasi_res = 1.0; },
               "CG stop: quasi and real residual too different (old_cgc)!"},
        Raised{"BicgstabResidual", -841, poisson,
               [](tier_call& x) { x.ncyc = 5200100, parm().factor_quasi_res = 1.0; },
               "BiCGstab stop: quasi and real residual too different (cgstab)!"},
        Raised{"GmresResidual", -851, poisson,
               [](tier_call& x) { x.ncyc = 5310100, parm().factor_quasi_res = 1.0; },
               "GMRes stop: quasi and real residual too different (gmres)!"},
        Raised{"Cycles", -862, poisson,
               [](tier_call& x) { x.ncyc = 1000003, parm().ncgrad_default = 0, parm().nptmn = 10; },
               "+++ WARNG: Cycling stop: not converged (tier_solve)!"},
        Raised{"Sweeps", -862, poisson, [](tier_call& x) { x.ncyc = 5000003, parm().ncgrad_default = 0; },
               "Cycling stop: not converged (tier_solve)!"},
        Raised{"CoarsestCg", -920, zero_product,
               [](tier_call& x) { x.ncyc = 1300100, parm().nrc = 4, parm().nrd = parm().nru = 0; },
               "Modification of initial guess (cgc0)."}),
    [](const testing::TestParamInfo<Raised>& tested) { return tested.param.name; });

}  // namespace
