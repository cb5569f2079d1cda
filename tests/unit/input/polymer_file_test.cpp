#include "input/polymer_file.h"

#include "input/polymer.h"
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
  return {list.value.begin() + 1, list.value.begin() + 1 + list.count};
}

TEST_F(PolymerFile, EchoesTheBlockOfOneKindAndCopiesItToTheSecond) {
  const std::string echo = read(seedOf("polymer"), 0);

  EXPECT_EQ(echo,
            "Polymer data sheet\n\n[First_Kind]\n<br> Data kind =  3\n<br> Polymer number =  17\n"
            "<b>\n<br> Producer = Testhouse\n<br> Grade = A\n</b>\n"
            "<br>   Temperatures =  2  2.30e+02  6.00e+01\n<br>   Conductivity =  1  1.50e+04\n"
            "<br>   Heat capacity =  1  2.10e+07\n<br>   Viscosity =  3  2.90e-01  2.50e+05  3.10e-03\n"
            "<br>   Specific volume =  3  1.50e+09  9.70e-01  8.20e+03\n<br>   Viscoelastic =  2  1.00e+00  "
            "2.00e+00\n"
            "<br>                                 2  3.00e+00  4.00e+00\n<br>   Expansion =  2  2.80e-05  "
            "1.05e-04\n"
            "<br>   Modulus =  2  3.20e+10  1.10e+10\n<br>   Poisson =  2  3.00e-01  3.00e-01\n<br>   "
            "Reserved =  0\n"
            "<br> Ejection =  1  90.00<br> No flow =  0"
            "<br>   Filler =  6  0.000000  25.000000  0.000003  700000000000.000000  0.230000  2.500000"
            "<br> Shrinkage =  4   1.00<br> Weld =  4   0.50<br> Series =  2   1.00   2.00"
            "<br>   Series A =  2  1.00e+00  2.00e+00\n<br>   Series B =  0\n<br>   Series C =  1  3.00e+00\n"
            "<br>   Shear modulus =  1  6.40e+09\n<br>\n");
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

}  // namespace
}  // namespace keld
