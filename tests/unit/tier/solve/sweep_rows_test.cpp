// Solves in several threads against one: systems on which sweeps with old values of other threads break down.
#include "tier/solve/sweep_rows.h"

#include <gtest/gtest.h>

#include "support/tier/known_hierarchy.h"
#include "support/tier/systems.h"
#include "support/tier/tier_call.h"
#include "tier/store/parameters.h"

namespace {

using namespace testing_support;

struct thread_case {
  const char* name;
  sparse_system (*system)();
  int matrix, nsolve, ncyc, nrd, nru;
  double most_growth;  // steps over those of one thread
};
class StepsInThreads : public testing::TestWithParam<thread_case> {};

TEST_P(StepsInThreads, StayNearThoseOfOneThread) {
  const thread_case& p = GetParam();
  int serial = 0;
  for (const int threads : {1, 2, 3, 8}) {
    tier_call call(p.system());
    use_threads(threads);
    tier::parm().nrd = p.nrd;
    tier::parm().nru = p.nru;
    call.matrix = p.matrix;
    call.nsolve = p.nsolve;
    call.ncyc = p.ncyc;

    call.run();

    EXPECT_EQ(call.ierr, 0) << threads << " threads";
    EXPECT_LE(call.relative_residual(), 1.1e-8) << threads << " threads";
    if (threads == 1) serial = call.ncyc_done;
    EXPECT_LE(call.ncyc_done, p.most_growth * serial) << threads << " threads";
  }
}

// Conjugate gradients need a positive definite preconditioner.
INSTANTIATE_TEST_SUITE_P(Systems, StepsInThreads,
                         testing::Values(thread_case{"LongRows", [] { return normal_equations(2100, 15, 1); },
                                                     12, 1, 1100500, 131, -131, 1.5},
                                         thread_case{"WallWithoutOrder",
                                                     [] { return renumbered(two_faces(40), 3); }, 12, 1,
                                                     1100500, 12, -12, 1.5},
                                         thread_case{"Plate", [] { return plane_stress(60, 40); }, 21, 20,
                                                     1300500, 131, 131, 1.2}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
