// Storage in mappings of its own: nothing of it stays on the heap, refusals, lengths across the limit.
#include "tier/store/array_storage.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <numeric>

#include "tier/store/context.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/work_arrays.h"

namespace {

constexpr auto limit = static_cast<std::int64_t>(tier::own_mapping_size / sizeof(double));

bool is_mapped(const void* place) {
  unsigned char resident = 0;
  const char* const page = static_cast<const char*>(place) - reinterpret_cast<std::uintptr_t>(place) % 4096;
  return ::mincore(const_cast<char*>(page), 1, &resident) == 0;
}

// An array of 24 MB that has gone makes the heap keep what comes after it, up to that size.
TEST(ArrayStorage, OfALongArrayGoesBackToTheSystemAtOnce) {
  if (!tier::own_mappings) GTEST_SKIP() << "sanitizers keep what has gone, to watch it";
  tier::work_array<double> x;
  x.allocate(6 * limit, 1.0, "x", "test");
  x.release();

  x.allocate(2 * limit, 1.0, "x", "test");
  const double* const place = x.data();
  ASSERT_TRUE(is_mapped(place));
  x.resize(limit + 1, "x", "test");
  EXPECT_EQ(x.data(), place);
  EXPECT_FALSE(is_mapped(place + 2 * limit - 1));
  x.release();

  EXPECT_FALSE(is_mapped(place));
}

struct Lengths {
  const char* name;
  std::int64_t before, after;
};

class ArrayLengths : public testing::TestWithParam<Lengths> {};

TEST_P(ArrayLengths, KeepTheirContentsAndCounts) {
  const auto [name, before, after] = GetParam();
  const std::int64_t others = tier::memory().ndsum;
  tier::work_array<double> x;
  x.allocate(before, "x", "test");
  std::iota(x.data(), x.data() + before, 1.0);

  x.resize(after, "x", "test");

  const std::int64_t kept = std::min(before, after);
  for (std::int64_t i = 1; i <= kept; ++i) ASSERT_EQ(x[i], static_cast<double>(i));
  x[after] = 1.0;
  EXPECT_EQ(tier::memory().ndsum - others, after);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(x.data()) % 16, 0U);
  x.release();
  EXPECT_EQ(tier::memory().ndsum, others);
}

INSTANTIATE_TEST_SUITE_P(Changes, ArrayLengths,
                         testing::Values(Lengths{"Grow", 3 * limit / 2, 3 * limit},
                                         Lengths{"GrowAcross", limit - 1, limit},
                                         Lengths{"Shrink", 3 * limit, 3 * limit / 2},
                                         Lengths{"ShrinkWithinAPage", 2 * limit + 9, 2 * limit + 8},
                                         Lengths{"ShrinkAcross", limit, limit - 1},
                                         Lengths{"ShrinkToOne", 5 * limit, 1}),
                         [](const auto& change) { return std::string(change.param.name); });

/// Lets this process have `more` bytes of address space beyond what it has.
void limit_address_space(std::size_t more) {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlimit space{pages * 4096 + more, RLIM_INFINITY};
  ASSERT_EQ(::setrlimit(RLIMIT_AS, &space), 0);
}

template <class Action>
int fault_of(const Action& action) {
  try {
    action();
  } catch (const tier::failure& f) {
    return f.ierr;
  }
  return 0;
}

TEST(ArrayStorage, RefusedBecomesTheCodesOfAllocationAndGrowth) {
  if (!tier::own_mappings) GTEST_SKIP() << "sanitizers hold all of the address space";
  tier::work_array<double> x, y;
  x.allocate(3 * limit, 7.0, "x", "test");
  limit_address_space(std::size_t{20} << 20);

  EXPECT_EQ(fault_of([&] { y.allocate(8 * limit, "y", "test"); }), tier::ierr_allocation);
  EXPECT_EQ(fault_of([&] { x.resize(8 * limit, "x", "test"); }), tier::ierr_extension_failed);

  EXPECT_EQ(x.size(), 3 * limit);
  EXPECT_EQ(x[3 * limit], 7.0);
  EXPECT_EQ(tier::memory().ndsum, 3 * limit);
}

}  // namespace
