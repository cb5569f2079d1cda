// Long work arrays, and positions that 32 bits can't count.
#include "tier/store/work_arrays.h"

#include <gtest/gtest.h>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/input_checks.h"

namespace {

// From 4 MiB on arrays stand on large pages; an allocator that checks its arguments (that of the sanitizers
// does) ends the program unless the size is a multiple of the page.
TEST(WorkArray, OfAnyLengthHoldsItsEnds) {
  for (const std::int64_t n : {1, 524287, 524288, 524289, 700001}) {
    tier::work_array<double> x;
    x.allocate(n, "x", "test");
    x[1] = 1.0;
    x[n] = 2.0;
    x.resize(n + 1, "x", "test");
    EXPECT_EQ(x[n], 2.0) << n;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(x.data()) % 64, 0U) << n;
  }
}

TEST(RequireCountable, EndsWithTenWherePointersOverflow) {
  EXPECT_NO_THROW(tier::require_countable(2147483646, "jw", "pbint"));
  for (const std::int64_t entries : {std::int64_t{2147483647}, std::int64_t{1} << 33}) {
    try {
      tier::require_countable(entries, "jw", "pbint");
      FAIL() << entries;
    } catch (const tier::failure& f) {
      EXPECT_EQ(f.ierr, tier::ierr_work_arrays_too_small);
      EXPECT_NE(tier::last_fault().find("jw in (pbint)"), std::string::npos);
    }
  }
}

}  // namespace
