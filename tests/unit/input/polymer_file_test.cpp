#include "input/polymer_file.h"

#include "input/polymer.h"
#include "support/damaged_input.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing_support::InputTest;
using testing_support::replaced;
using testing_support::seedOf;

class PolymerFile : public InputTest {
 protected:
  std::string read(const std::string& text, int secondKind) {
    processRecord.secondKind = secondKind;
    TextReader file = textOf(text);
    return echoOf([&] { readPolymerKinds(file); });
  }
};

std::vector<double> numbersOf(const CountedList& list) {
  std::vector<double> numbers;
  for (int i = 1; i <= list.count; ++i) numbers.push_back(list(i));
  return numbers;
}

TEST_F(PolymerFile, PutsPairsInOrderAndCopiesTheFirstKindToTheSecond) {
  read(seedOf("polymer"), 0);

  EXPECT_EQ(polymerMode, 1);
  EXPECT_THAT(numbersOf(polymerRecord[1].temperatures), testing::ElementsAre(230 + 273.15, 60 + 273.15));
  EXPECT_THAT(numbersOf(polymerRecord[2].modulus), testing::ElementsAre(3.2e10, 1.1e10));
  EXPECT_EQ(fillerValues.fillerValue2, 25.0);
  EXPECT_EQ(fillerValues.fillerDensity, 2.5);
}

TEST_F(PolymerFile, ReadsTheSecondKindAndItsFillerValues) {
  const std::string echo = read(seedOf("polymer"), 1);

  const PolymerRecord& second = polymerRecord[2];
  EXPECT_THAT(numbersOf(second.modulus), testing::ElementsAre(2.6e10, 2.6e10)) << "one number stands twice";
  EXPECT_THAT(numbersOf(second.shearModulus), testing::ElementsAre(testing::DoubleEq(1e10)))
      << "2.6e10 / (2 x 1.3)";
  EXPECT_THAT(echo, HasSubstr("<br>   Shear modulus =  0\n<br>\n"));
  EXPECT_EQ(fillerValues.fillerExpansion, 4e-6);
  EXPECT_EQ(fillerValues.fillerModulus, -1.0) << "a shorter list leaves -1";
}

TEST_F(PolymerFile, EntriesOfProperty11EndTheReading) {
  const std::string echo = read(seedOf("polymer", "property11"), 1);

  EXPECT_EQ(polymerMode, 3);
  EXPECT_THAT(echo, Not(HasSubstr("[Second_Kind]")));
  EXPECT_EQ(polymerRecord[2].modulus.count, 0);
  EXPECT_EQ(polymerRecord[1].shearModulus.count, 0);
  EXPECT_EQ(fillerValues.fillerModulus, 0.0);

  read(seedOf("polymer", "property11"), 0);
  EXPECT_EQ(polymerRecord[2].modulus.count, 2);
  EXPECT_EQ(polymerRecord[2].property11.count, 0) << "property11 isn't copied";
}

TEST_F(PolymerFile, TextInAnEchoedEntryLeavesTheFormerValue) {
  std::string text = replaced(seedOf("polymer"), "Polymer number = 17", "Polymer number = none");
  text = replaced(text, "Conductivity = 1   15000", "Conductivity = 1   unknown");
  text = replaced(text, "Weld = 1  0.5", "Weld = 1  weak");

  const std::string echo = read(text, 0);

  EXPECT_THAT(echo, HasSubstr("<br> Polymer number =  3\n"));
  EXPECT_THAT(echo, HasSubstr("<br>   Conductivity =  1  0.00e+00\n"));
  EXPECT_THAT(echo, HasSubstr("<br> Weld =  4   1.00<br>"));
  EXPECT_EQ(polymerRecord[1].modulus(1), 3.2e10);
}

TEST_F(PolymerFile, EntriesBeyondTheSixthFillerValueStayInTheFile) {
  read(replaced(seedOf("polymer"), "Filler = 6", "Filler = 900"), 0);
  EXPECT_EQ(fillerValues.fillerDensity, 2.5);
  EXPECT_EQ(polymerRecord[1].shearModulus(1), 6.4e9);
}

using testing_support::Damage;
using DamagedPolymer = testing_support::DamagedInput;

TEST_P(DamagedPolymer, IsNamedWithItsLine) { expectItsWords(); }

INSTANTIATE_TEST_SUITE_P(
    Places, DamagedPolymer,
    testing::Values(
        Damage{"polymer", "[First_Kind]", "[first_kind]", "starts with [First_Kind]"},
        Damage{"polymer", "[Second_Kind]", " [Second_Kind]", "starts with [Second_Kind]"},
        Damage{"polymer", "Temperatures = 2", "Temperatures = 3", "line 11: a count is 3, expected 0 to 2"},
        Damage{"polymer", "Viscosity = 3", "Viscosity = -1", "line 14: a count is -1, expected 0 to 10"},
        Damage{"polymer", "Modulus = 2", "Modulus = 16", "a count is 16, expected 0 to 15"},
        Damage{"polymer", "Modulus = 2   1.1e+10", "Modulus = 2   soft", "a finite number of a counted list"},
        Damage{"polymer", "Poisson = 1   0.3", "Poisson = 1   0,3", "found \"0,3"},
        Damage{"polymer", "Poisson = 1   0.3", "Poisson = 0", "needs at least one number"},
        Damage{"polymer", "0.97", "nan", "a finite number of a counted list, found \"nan"},
        Damage{"polymer", "Filler = 6", "Filler = all", "an integer behind the \"=\""},
        Damage{"polymer", "Filler = 6", "Filler = -1", "a count is -1"},
        Damage{"polymer", "Series = 2", "Series = 2000000000", "a count is 2000000000"},
        Damage{"polymer", "Series A = 2", "Series A = 11", "a count is 11, expected 0 to 10"}));

}  // namespace
}  // namespace keld
