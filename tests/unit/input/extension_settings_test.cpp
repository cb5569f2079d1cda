// KELD's own section of ".CPU": its place, missing lines, values that aren't choices.
#include "input/extension_settings.h"

#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;
using testing_support::replaced;
using testing_support::seedOf;

const std::string section = "[Keld_Extension] of KELD\none\ntwo\n  wall string= 31001  flag= 1  value= 2\n";

struct PlaceCase {
  const char* name;
  std::string text;
  bool given;
  int wallModel;
};

class Extension : public InputTest, public testing::WithParamInterface<PlaceCase> {};

TEST_P(Extension, IsFoundWhereverItStandsAndItsLastLinesMayBeMissing) {
  fuzz::readerNamed("settings").read(GetParam().text);

  EXPECT_EQ(processRecord.extensionGiven, GetParam().given);
  EXPECT_EQ(processRecord.wallModel, GetParam().wallModel);
  EXPECT_EQ(processRecord.cycleLimit, 3000) << "the other section is read as without this one";
}

INSTANTIATE_TEST_SUITE_P(
    Places, Extension,
    testing::Values(PlaceCase{"Absent", seedOf("settings"), false, wedge_walls},
                    PlaceCase{"Behind", seedOf("settings", "extension"), true, facet_walls},
                    PlaceCase{"InFront", section + seedOf("settings"), true, facet_walls},
                    PlaceCase{"AtTheVeryEnd", seedOf("settings") + section, true, facet_walls},
                    PlaceCase{"OldStringTable", replaced(section, "31001", "123") + seedOf("settings"), true,
                              facet_walls},
                    PlaceCase{"NoValueLine", "[Keld_Extension]\none\ntwo\n\n" + seedOf("settings"), true,
                              wedge_walls},
                    PlaceCase{"TagAlone", seedOf("settings") + "[Keld_Extension]", true, wedge_walls},
                    PlaceCase{"TagWithinALine", " " + section + seedOf("settings"), false, wedge_walls}),
    [](const testing::TestParamInfo<PlaceCase>& place) { return place.param.name; });

TEST_F(InputTest, ExtensionIsEchoedWithTheLabelOfTheStringTable) {
  const std::string text = seedOf("settings", "extension");
  EXPECT_THAT(echoOf([&] { fuzz::readerNamed("settings").read(text); }),
              HasSubstr("<br>\n   Wall model      = 2.00e+00 \n"));
}

TEST_F(InputTest, ExtensionRefusesWhatIsNoChoice) {
  const std::string text = seedOf("settings", "extension");
  const auto refusal = [&](const char* value) {
    const std::string damaged = replaced(text, "value= 2\n[EOF]", "value= " + std::string(value) + "\n[EOF]");
    return refusalOf([&] { fuzz::readerNamed("settings").read(damaged); });
  };
  for (const char* value : {"3", "0", "1.5", "-1"})
    EXPECT_THAT(refusal(value), HasSubstr("line 19: wall model of section [Keld_Extension] is " +
                                          std::string(value) + ": expected 1 (wedge) or 2 (facet)"));
  EXPECT_THAT(refusal("facet"), HasSubstr("line 19: expected a finite number"));
}

}  // namespace
}  // namespace keld
