// What every reader shares: seeds of the fuzz targets, files cut at every byte, numbers that are none.
#include <algorithm>

#include "input/prior_results.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;
using testing_support::replaced;
using testing_support::seedOf;

TEST_F(InputTest, EverySeedIsReadOrRefusedWithAMessage) {
  namespace fs = std::filesystem;
  for (const fuzz::Reader& reader : fuzz::readers)
    for (const auto& seed :
         fs::directory_iterator(fs::path(TEST_DATA) / ".." / "fuzz" / "seeds" / reader.name)) {
      SCOPED_TRACE(seed.path());
      try {
        reader.read(testing_support::readText(seed.path()));
      } catch (const RunEnded&) {
        EXPECT_NE(seed.path().filename(), "valid");
      }
    }
}

/// From where to where a cut has to end the run: behind `begin` (the start where empty) up to before the last
/// `end`, whose last character may be missed only where nothing is lost.
struct CutCase {
  const char *reader, *begin, *end;
};

class Cut : public InputTest, public testing::WithParamInterface<CutCase> {};

TEST_P(Cut, EndsTheRunUpToTheLastValueThatIsUsed) {
  const std::string text = seedOf(GetParam().reader);
  const std::size_t begin =
      *GetParam().begin ? text.find(GetParam().begin) + std::string(GetParam().begin).size() : 0;
  const std::size_t end = text.rfind(GetParam().end);
  ASSERT_NE(end, std::string::npos);
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    bool ended = false;
    try {
      fuzz::readerNamed(GetParam().reader).read(text.substr(0, cut));
    } catch (const RunEnded&) {
      ended = true;
    }
    if (cut >= begin && cut <= end) {
      EXPECT_TRUE(ended) << "cut at byte " << cut;
    }
    if (cut < begin || cut > end + std::string(GetParam().end).size()) {
      EXPECT_FALSE(ended) << "cut at byte " << cut;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Cut,
                         testing::Values(CutCase{"process", "", "25\n"}, CutCase{"settings", "", "3000"},
                                         CutCase{"boundary", "[Keld_FixBC]", "9"},
                                         CutCase{"polymer", "", "0  end\n"}, CutCase{"geometry", "", "0\n"},
                                         CutCase{"units", "", "]"}));

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

struct FaultCase {
  const char *reader, *what, *by, *words;
};

class Fault : public InputTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(Fault, IsNamedWithItsLine) {
  const FaultCase& fault = GetParam();
  const std::string text = replaced(seedOf(fault.reader), fault.what, fault.by);
  EXPECT_THAT(refusalOf([&] { fuzz::readerNamed(fault.reader).read(text); }), HasSubstr(fault.words));
}

INSTANTIATE_TEST_SUITE_P(
    Process, Fault,
    testing::Values(
        FaultCase{"process", "[Keld_ProcessData]", "[Keld_Process]", "starts with [Keld_ProcessData], found"},
        FaultCase{"process", "value= 230", "value= hot", "line 4: expected a finite number as the value of"},
        FaultCase{"process", "value= 215", "value= inf", "line 17: expected a finite number"},
        FaultCase{"process", "value= 215", "value= 2.1D+2", "line 17: expected a finite number"},
        FaultCase{"process", "value= 25\n", "value= nan\n", "string number 21001"},
        FaultCase{"process", "string= 20011  flag= 1  value= 1", "string= 20011  flag= 1  value= 1e10",
                  "(filler present) is beyond the range"},
        FaultCase{"settings", "[Keld_ComputeData]", "[Keld_Data]", "starts with [Keld_ComputeData]"},
        FaultCase{"settings", "value= 2.9", "value= direct", "line 6: expected a finite number"},
        FaultCase{"boundary", "5\n", "five\n",
                  "line 4: expected an integer (boundary node number of record 2)"}));

INSTANTIATE_TEST_SUITE_P(
    Polymer, Fault,
    testing::Values(
        FaultCase{"polymer", "[First_Kind]", "[first_kind]", "starts with [First_Kind]"},
        FaultCase{"polymer", "[Second_Kind]", " [Second_Kind]", "starts with [Second_Kind]"},
        FaultCase{"polymer", "Temperatures = 2", "Temperatures = 3",
                  "line 11: a count is 3, expected 0 to 2"},
        FaultCase{"polymer", "Viscosity = 3", "Viscosity = -1", "line 14: a count is -1, expected 0 to 10"},
        FaultCase{"polymer", "Modulus = 2", "Modulus = 16", "a count is 16, expected 0 to 15"},
        FaultCase{"polymer", "Modulus = 2   1.1e+10", "Modulus = 2   soft",
                  "a finite number of a counted list"},
        FaultCase{"polymer", "Poisson = 1   0.3", "Poisson = 1   0,3", "found \"0,3"},
        FaultCase{"polymer", "Poisson = 1   0.3", "Poisson = 0", "needs at least one number"},
        FaultCase{"polymer", "0.97", "nan", "a finite number of a counted list, found \"nan"},
        FaultCase{"polymer", "Filler = 6", "Filler = all", "an integer behind the \"=\""},
        FaultCase{"polymer", "Filler = 6", "Filler = -1", "a count is -1"},
        FaultCase{"polymer", "Series = 2", "Series = 2000000000", "a count is 2000000000"},
        FaultCase{"polymer", "Series A = 2", "Series A = 11", "a count is 11, expected 0 to 10"}));

INSTANTIATE_TEST_SUITE_P(
    Geometry, Fault,
    testing::Values(
        FaultCase{"geometry", "5 5 0.1", "5 x 0.1",
                  "line 3: expected an integer (number of nodes in the header), found \"x"},
        FaultCase{"geometry", "5 5 0.1", "2000000000 5 0.1",
                  "line 3: the file is too short for the 2000000000 elements and 5 nodes"},
        FaultCase{"geometry", " 5 1 2 0", " 6 1 2 0",
                  "line 4: expected an integer from 1 to 5 (number of the element of record 1)"},
        FaultCase{"geometry", "\n 3 3 5 4", "\n 1 3 5 4",
                  "line 6: element record 3 has number 1, which a record before"},
        FaultCase{"geometry", " 1 2 3 4 20", " 1 2 6 4 20",
                  "line 5: expected an integer from 1 to 5 (second node of"},
        FaultCase{"geometry", " 1 2 3 4 20", " 1 2 3 -4 20", "from 0 to 5 (third node"},
        FaultCase{"geometry", " 1 2 3 4 20", " 1 0 3 4 20", "from 1 to 5 (first node"},
        FaultCase{"geometry", "2 3 4 20 0 1.0", "2 3 4 20 0.5 1.0",
                  "an integer (flag of element of record 2)"},
        FaultCase{"geometry", "0 1.0 0.0 1.25", "0 - 0.0 1.25",
                  "a number (seventh field of element of record 1)"},
        FaultCase{"geometry", "1.0 0.0 1.25", "1.0 0.0 inf", "(ninth field of element of record 1)"},
        FaultCase{"geometry", "1 -50 0 0 1", "0 -50 0 0 1", "from 1 to 5 (number of the node of record 1)"},
        FaultCase{"geometry", "\n 4 0 100", "\n 2 0 100",
                  "line 11: node record 3 has number 2, which a record before"},
        FaultCase{"geometry", "0 100 0 0", "0 1e999 0 0",
                  "line 11: expected a finite number (y of node of record 3)"}));

INSTANTIATE_TEST_SUITE_P(
    Priors, Fault,
    testing::Values(FaultCase{"stress", "\n1 3e7", "\n6 3e7",
                              "line 3: expected an integer from 1 to 5 (number of the element of record 2)"},
                    FaultCase{"stress", "1e7 1 1", "1e7 x 1",
                              "an integer of two columns at most (third field of record 1)"},
                    FaultCase{"stress", "0.96", "nan", "(first direction of record 1), found \"nan"},
                    FaultCase{"stress", "\n3 3e7", "\n5 3e7", "give stress for 3 of 4 part elements"},
                    FaultCase{"part", "1 91", "1 warm",
                              "line 3: expected a finite number (temperature of record 2)"},
                    FaultCase{"part", "1 91", "0 91", "from 1 to 5"},
                    FaultCase{"cool", "93 73", "93 ", "line 5: expected an integer from 1 to 5 (number"},
                    FaultCase{"cool", "\n2 92", "\n5 92", "give temperatures for 3 of 4 part elements"}));

}  // namespace
}  // namespace keld
