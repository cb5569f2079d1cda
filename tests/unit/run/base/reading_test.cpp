#include "run/base/reading.h"

#include "run/base/labels.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;

struct ValueLineCase {
  const char* text;
  ValueUse use;
  int found;
  double value;  // LastValue, 7 before
  const char* echo;
  const char* rest;  // first characters that are left
};

class ValueLine : public InputTest, public testing::WithParamInterface<ValueLineCase> {};

TEST_P(ValueLine, ReadsAndEchoes) {
  LastValue = 7.0;
  TextReader file = textOf(GetParam().text);
  int found = -1;

  const std::string echo = echoOf([&] { found = vReadValueLine(file, GetParam().use); });

  EXPECT_EQ(found, GetParam().found);
  EXPECT_EQ(LastValue, GetParam().value);
  EXPECT_EQ(echo, GetParam().echo);
  EXPECT_EQ(std::string(file.line().value_or("")), GetParam().rest);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ValueLine,
    testing::Values(
        ValueLineCase{"free text= 20002 more = 1  and = -2.5e2 unit\nnext", ValueUse::used, 1, -250.0,
                      "<br>\n   Value 2      = -2.50e+02 oC", "next"},
        ValueLineCase{"a= 20002 b=1 c=42\nnext", ValueUse::used, 1, 2.0,
                      "<br>\n   Value 2      = 2.00e+00 oC", "next"},
        ValueLineCase{"a= 20002 b= x c= text\nnext", ValueUse::echoed, 1, 7.0,
                      "<br>\n   Value 2      = 7.00e+00 oC", "next"},
        ValueLineCase{"a= 22001 b= 1 c= 3\nnext", ValueUse::used, 1, 3.0,
                      "<br>\n   Setting 1      = 3.00e+00 ", "next"},
        ValueLineCase{"a= 30000 b= 1 c= 3\nnext", ValueUse::used, 1, 7.0, "<br>\n", "next"},
        ValueLineCase{"a= 30001 b= 1 c= 3\nnext", ValueUse::used, 0, 7.0,
                      "<br>\n<br>\n   >>> !! Warning !! <<<  There is inconsistent 30001 string detected.\n",
                      " b= 1 c= 3"},
        ValueLineCase{"a= 60001\nnext", ValueUse::used, 1, -1.0,
                      "<br>\n<br>/* Block title\n<br>second line */\n", ""}));

struct BadValueCase {
  const char* text;
  const char* words;
};

class BadValueLine : public InputTest, public testing::WithParamInterface<BadValueCase> {};

TEST_P(BadValueLine, EndsTheRunWhereTheValueIsUsed) {
  LastValue = std::numeric_limits<double>::quiet_NaN();
  TextReader file = textOf(GetParam().text);
  const ReportSection section;
  EXPECT_THAT(refusalOf([&] { vReadValueLine(file, ValueUse::used); }), HasSubstr(GetParam().words));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, BadValueLine,
    testing::Values(BadValueCase{"a= 20002 b= 1 c= text\n",
                                 "finite number as the value of string number 20002, found"},
                    BadValueCase{"a= 20002 b= 1 c= nan\n", "finite number as the value"},
                    BadValueCase{"a= 20002 b= 1 c= ", "found the end of the file"},
                    BadValueCase{"a= 20002 b= 1", "expected a"},
                    BadValueCase{"a= 20002", "expected a value line"},
                    BadValueCase{"a= 200", "expected a value line"},
                    BadValueCase{"no equals sign", "expected a value line"},
                    BadValueCase{"a= text b= 1 c= 2", "expected a string number"},
                    BadValueCase{"a= 123 b= 1 c= 2", "string number 123 is not in the string table"}));

TEST_F(InputTest, EchoThroughCopiesBySignAndSize) {
  TextReader file = textOf("label = 5 rest\nsecond\nthird = x");

  const std::string echo = echoOf([&] {
    vEchoThrough(file, 1);
    file.readInt();
    vEchoThrough(file, -1);
    vEchoThrough(file, 0);
    vEchoThrough(file, 3);
  });

  EXPECT_EQ(echo, "<br>label = rest\n<br>");
  EXPECT_EQ(file.get(), ' ');
}

class TitleBlock : public InputTest,
                   public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(TitleBlock, NeedsBothMarksAndStandsBehindTheClosingLine) {
  const auto& [text, next] = GetParam();
  TextReader file = textOf(text);
  if (next) {
    vCheckTitleBlock(file);
    EXPECT_EQ(std::string(file.line().value_or("")), next);
    return;
  }
  const std::string console = consoleOf([&] {
    EXPECT_THAT(refusalOf([&] { vCheckTitleBlock(file); }), HasSubstr("job, line ")) << "the file is named";
  });
  EXPECT_THAT(console, testing::StartsWith("\n\n#####( !! Error !! in title format  )#####\n\n"));
}

INSTANTIATE_TEST_SUITE_P(Blocks, TitleBlock,
                         testing::Values(std::pair{"/* one line */\n5", "5"},
                                         std::pair{"free\n/*\n */ rest\n5", "5"},
                                         std::pair{"/* open\n", nullptr}, std::pair{"closed */\n5", nullptr},
                                         std::pair{"", nullptr}));

TEST(Labels, UnitStaysThatOfTheLineBeforeWhereALineHasOneNumber) {
  const StringTable table =
      StringTable::parse("\xFF\xFE" + fuzz::utf16("5 1 early\r\n[Language= ENGLISH]\r\n5 3   4 Mold\r\n6 "
                                                  "Speed\r\n[Language= FRENCH]\r\n7 2\r\n5 9 late\r\n"),
                         "table");

  ASSERT_NE(table.find(5), nullptr);
  EXPECT_EQ(table.find(5)->label, "Mold");
  EXPECT_EQ(table.find(5)->unit, 3);
  ASSERT_NE(table.find(6), nullptr);
  EXPECT_EQ(table.find(6)->label, "Speed");
  EXPECT_EQ(table.find(6)->unit, 3);
  ASSERT_NE(table.find(7), nullptr) << "the search runs on past further sections";
  EXPECT_EQ(table.find(7)->label, "");
  EXPECT_EQ(table.find(8), nullptr);
}

TEST(Labels, UnitsStandFromTheNinthCharacterToTheThirdBlank) {
  const UnitTable table = UnitTable::parse("1       early\n[Unit= Metrics]\n1       a b c d\n2       " +
                                               std::string(60, 'x') + "\n3       \n1       late\n",
                                           "units");

  EXPECT_EQ(table.find(1), "a b c");
  EXPECT_EQ(table.find(2), std::string(50, 'x'));
  EXPECT_EQ(table.find(3), "");
  EXPECT_EQ(table.find(4), "");
}

TEST(Labels, Utf16BecomesUtf8) {
  using namespace std::string_view_literals;
  EXPECT_EQ(utf8FromUtf16("\xE4\0\x3D\xD8\x00\xDE\x00\xD8!\0\xAC\x20?"sv), "\u00E4\U0001F600\uFFFD!\u20AC");
}

}  // namespace
}  // namespace keld
