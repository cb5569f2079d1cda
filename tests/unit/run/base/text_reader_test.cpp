#include "run/base/text_reader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;

TextReader over(const char* text) { return TextReader::fromText(text, "file"); }

struct NumberCase {
  const char* text;
  std::optional<double> value;
  int next;  // character behind the number, -1 at the end
};

class ReadDouble : public testing::TestWithParam<NumberCase> {};

TEST_P(ReadDouble, StopsWhereScanfDoes) {
  TextReader file = over(GetParam().text);
  EXPECT_EQ(file.readDouble(), GetParam().value);
  EXPECT_EQ(file.peek(), GetParam().next);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, ReadDouble,
    testing::Values(NumberCase{" \n\t+1.5e3 x", 1500.0, ' '}, NumberCase{"1,5", 1.0, ','},
                    NumberCase{"-.5e", -0.5, 'e'}, NumberCase{"+-1", std::nullopt, '+'},
                    NumberCase{"  text", std::nullopt, 't'}, NumberCase{" ", std::nullopt, -1},
                    NumberCase{"-1e999;", -HUGE_VAL, ';'}, NumberCase{"1e-999", 0.0, -1}));

struct IntegerCase {
  const char* text;
  int width;
  std::optional<int> value;
  int next;
};

class ReadInt : public testing::TestWithParam<IntegerCase> {};

TEST_P(ReadInt, StopsWhereScanfDoes) {
  TextReader file = over(GetParam().text);
  EXPECT_EQ(file.readInt(GetParam().width), GetParam().value);
  EXPECT_EQ(file.peek(), GetParam().next);
}

INSTANTIATE_TEST_SUITE_P(Numbers, ReadInt,
                         testing::Values(IntegerCase{"  123 ", 2, 12, '3'}, IntegerCase{"-12", 2, -1, '2'},
                                         IntegerCase{"+7.5", 0, 7, '.'},
                                         IntegerCase{"2147483648", 0, std::nullopt, '2'},
                                         IntegerCase{"-2147483648", 0, -2147483647 - 1, -1}));

TEST(TextReader, EndsLinesAtLineFeedsWithOrWithoutCarriageReturn) {
  TextReader file = over("a\r\nb\rc\n\r\nlast\r");

  EXPECT_EQ(file.line(), "a");
  EXPECT_EQ(file.line(), "b\rc");
  EXPECT_EQ(file.line(), "");
  EXPECT_EQ(file.lineNumber(), 4);
  EXPECT_EQ(file.line(), "last\r");
  EXPECT_EQ(file.line(), std::nullopt);
}

struct NeedCase {
  const char* text;
  void (*read)(TextReader&);
  const char* words;
};

class Need : public InputTest, public testing::WithParamInterface<NeedCase> {};

TEST_P(Need, NamesFileLineExpectationAndFinding) {
  TextReader file = over(GetParam().text);
  EXPECT_THAT(refusalOf([&] { GetParam().read(file); }), HasSubstr(GetParam().words));
}

const auto needInt = [](TextReader& file) { file.needInt("count"); };
const auto needDouble = [](TextReader& file) { file.needDouble("x of node", 17); };
INSTANTIATE_TEST_SUITE_P(
    Faults, Need,
    testing::Values(
        NeedCase{"\n 3.5", needInt,
                 "<br>\n !! Error !!  file, line 2: expected an integer (count), found \"3.5\"\n"},
        NeedCase{"99999999999", needInt, "found \"99999999999\""},
        NeedCase{"", needInt, "found the end of the file"},
        NeedCase{"nan", needDouble,
                 "line 1: expected a finite number (x of node of record 17), found \"nan\""},
        NeedCase{"-inf", needDouble, "found \"-inf\""}, NeedCase{"1e999", needDouble, "found \"1e999\""},
        NeedCase{"1.5mm", needDouble, "found \"1.5mm\""},
        NeedCase{"7", [](TextReader& file) { file.needIntInRange(1, 6, "node"); },
                 "an integer from 1 to 6 (node)"},
        NeedCase{"a\nb", [](TextReader& file) { file.needLineStartingWith("[Tag]"); },
                 "line 2: expected a line that starts with [Tag], found the end of the file"}));

TEST_F(InputTest, AFileThatIsAFolderIsRefusedByName) {
  const std::string folder = job_.folder().string();
  EXPECT_THAT(refusalOf([&] { TextReader::open(folder); }),
              HasSubstr("Cannot read the file " + folder + ": "));
}

}  // namespace
}  // namespace keld
