// Stress and temperature files that are cut or damaged.
#include "input/prior_results.h"

#include "support/damaged_input.h"

namespace keld {
namespace {

using testing_support::InputTest;
using testing_support::seedOf;

TEST_F(InputTest, APriorResultThatEndsBetweenRecordsIsNoFault) {
  for (const char* name : {"stress", "part", "cool"}) {
    const std::string text = seedOf(name);
    const std::size_t title = text.find("*/") + 2;
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      // A whole record has a line end behind its last digit, or lacks nothing but that.
      const bool whole = cut >= title && (text[cut - 1] == '\n' || cut == text.size() || text[cut] == '\n');
      const bool lastDigitLost =
          cut > title && std::string(name) != "stress" && cut + 1 < text.size() && text[cut + 1] == '\n';
      SCOPED_TRACE(std::string(name) + " cut at byte " + std::to_string(cut));
      if (whole || lastDigitLost)
        EXPECT_NO_THROW(fuzz::readerNamed(name).read(text.substr(0, cut)));
      else
        EXPECT_THROW(fuzz::readerNamed(name).read(text.substr(0, cut)), RunEnded);
    }
  }
}

using testing_support::Damage;
using DamagedPriors = testing_support::DamagedInput;

TEST_P(DamagedPriors, IsNamedWithItsLine) { expectItsWords(); }

INSTANTIATE_TEST_SUITE_P(
    Places, DamagedPriors,
    testing::Values(
        Damage{"stress", "\n1 3e7", "\n6 3e7",
               "line 3: expected an integer from 1 to 5 (number of the element of record 2)"},
        Damage{"stress", "1e7 1 1", "1e7 x 1", "an integer of two columns at most (third field of record 1)"},
        Damage{"stress", "0.96", "nan", "(first direction of record 1), found \"nan"},
        Damage{"stress", "\n3 3e7", "\n5 3e7", "give stress for 3 of 4 part elements"},
        Damage{"part", "1 91", "1 warm", "line 3: expected a finite number (temperature of record 2)"},
        Damage{"part", "1 91", "0 91", "from 1 to 5"},
        Damage{"cool", "93 73", "93 ", "line 5: expected an integer from 1 to 5 (number"},
        Damage{"cool", "\n2 92", "\n5 92", "give temperatures for 3 of 4 part elements"}));

}  // namespace
}  // namespace keld
