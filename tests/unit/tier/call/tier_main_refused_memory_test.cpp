// Every allocation of a call in turn is refused: texts, tables and lists of the standard library too.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "support/tier/tier_call.h"
#include "tier/api/tier.h"
#include "tier/store/parameters.h"

namespace {

std::int64_t countdown = -1;  // allocations until one is refused; -1: none is

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  if (countdown >= 0 && countdown-- == 0) throw std::bad_alloc();
  if (void* p = std::malloc(size > 0 ? size : 1)) return p;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace testing_support;

/// False when the call needed fewer allocations. What the test's own capture of output takes isn't counted.
bool call_with_refusal(tier_call& x, std::int64_t at) {
  countdown = at;
  TIER(&x.nnu, &x.nna, &x.nsys, x.s.ia.data(), x.s.ja.data(), x.s.a.data(), x.s.f.data(), x.s.u.data(),
       x.s.iu.data(), &x.ndiu, x.s.ip.data(), &x.ndip, &x.matrix, x.iscale.data(), &x.res_in, &x.res_out,
       &x.ncyc_done, &x.ierr, &x.nsolve, &x.ifirst, &x.eps, &x.ncyc, &x.iswtch, &x.a_cmplx, &x.g_cmplx,
       &x.p_cmplx, &x.w_avrge, &x.chktol, &x.idump, &x.iout);
  const bool refused = countdown == -1;
  countdown = -1;
  return refused;
}

TEST(RefusedMemory, EndsTheCallWithSeventyWhereverItIs) {
  for (const int iswtch : {5120, 4120}) {
    int ended = 0, lost_lines = 0, at = 0;
    tier_call call = coupled_call(12);
    tier::parm().nptmn = 20;
    tier::parm().itracelevel = 1;
    call.nsolve = 20;
    call.iswtch = iswtch;
    call.idump = call.iout = 1;
    call.run();  // makes what the first call alone does
    testing::internal::CaptureStdout();
    for (; call_with_refusal(call, at); ++at) {
      EXPECT_TRUE(call.ierr == 70 || call.ierr == 0) << "allocation " << at << ": " << call.ierr;
      ++(call.ierr == 70 ? ended : lost_lines);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_GT(ended, 50);
    EXPECT_LT(lost_lines, 20);
    int ierr = 0;
    TIER_LEAVE(&ierr);
  }
}

}  // namespace
