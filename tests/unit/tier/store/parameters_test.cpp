// The parameter store: defaults, accessors, access by name, printed list.
#include "tier/store/parameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "places.h"
#include "tier/api/tier.h"
#include "tier/store/parameter_list.h"

namespace {

using testing::HasSubstr;

int length_of(const std::string& text) { return static_cast<int>(text.size()); }

/// Compares the store, read by name over all types, with the table of defaults.
void expect_defaults() {
  std::ifstream in(places::data / "tier/parameter_defaults.txt");
  std::string name, kind;
  std::size_t count = 0;
  for (; in >> name >> kind; ++count) {
    std::string expected;
    std::getline(in, expected);
    expected.erase(0, 1);
    int type = 0, integer = -77, logical = -77;
    double real = -77.0;
    std::string text(300, '?');
    const int length = length_of(name), room = length_of(text);
    TIER_GETANY(name.c_str(), &length, &type, &integer, &real, &logical, text.data(), &room);
    if (kind == "integer") {
      EXPECT_EQ(std::pair(type, integer), std::pair(1, std::atoi(expected.c_str()))) << name;
    } else if (kind == "real") {
      EXPECT_EQ(std::pair(type, real), std::pair(3, std::strtod(expected.c_str(), nullptr))) << name;
    } else if (kind == "logical") {
      EXPECT_EQ(std::pair(type, logical), std::pair(4, expected == "true" ? -1 : 0)) << name;
    } else {
      EXPECT_EQ(std::pair(type, std::string(tier::trimmed(text))), std::pair(2, expected)) << name;
    }
  }
  EXPECT_EQ(count, tier::parameter_list().size());
}

TEST(Parameters, StartWithTheirDefaultsAndComeBackToThem) {
  expect_defaults();
  for (const tier::parameter_entry& p : tier::parameter_list()) {
    const tier::parameter_reference place = p.place();
    if (int* const* i = std::get_if<int*>(&place)) **i += 1;
    if (double* const* d = std::get_if<double*>(&place)) **d = 0.371;
    if (bool* const* b = std::get_if<bool*>(&place)) **b = !**b;
    if (std::string* const* s = std::get_if<std::string*>(&place)) **s = "away";
    EXPECT_FALSE(p.at_default()) << p.name;
  }
  TIER_RESET_HIDDEN();
  expect_defaults();
}

TEST(Parameters, HaveAccessorsOfTheirType) {
  const int three = 3, five = 5;
  const double half = 0.5;
  int i = 0, logical = 0;
  double d = 0.0;
  TIER_SET_LEVELX(&three);
  TIER_GET_LEVELX(&i);
  TIER_SET_ECG(&half);
  TIER_GET_ECG(&d);
  TIER_SET_KEEPMEM(&five);
  TIER_GET_KEEPMEM(&logical);
  EXPECT_EQ(std::tuple(i, d, logical), std::tuple(3, 0.5, -1));
}

TEST(Parameters, TakeTextsInTwoForms) {
  const std::string name = "run.log   ";
  const int length = length_of(name), room = 10;
  char text[11] = "??????????";
  TIER_SET_LOGFILE(name.c_str(), &length);
  TIER_GET_LOGFILE(text, &room);
  EXPECT_EQ(std::string(text), "run.log   ");

  const int codes[] = {'a', '.', 'b', ' '};
  int count = 4, back[8] = {}, eight = 8, two = 2;
  TIER_ISET_FILNAM(codes, &count);
  TIER_IGET_FILNAM(back, &eight);
  EXPECT_EQ(std::tuple(eight, back[0], back[2]), std::tuple(3, 'a', 'b'));
  TIER_IGET_FILNAM(back, &two);
  EXPECT_EQ(two, -3);

  const std::vector<int> many(400, 'x');
  for (const auto& [iset, limit] : {std::pair{&TIER_ISET_FILNAM, 100},
                                    {&TIER_ISET_FILNAM_UZAWA, 100},
                                    {&TIER_ISET_FILNAM_DUMP, 300},
                                    {&TIER_ISET_SCRATCHFILE, 200}}) {
    int given = limit + 1;
    iset(many.data(), &given);
    EXPECT_EQ(given, -limit);
    given = limit;
    iset(many.data(), &given);
    EXPECT_EQ(given, limit);
  }
}

TEST(Parameters, AreFoundByNameWithTrailingBlanks) {
  const int four = 4, three = 3, nine = 9, two = 2, real_type = 3;
  const double value = 0.25;
  int i = 0;
  TIER_SETINTEGER("nrd ", &four, &two);
  TIER_GETINTEGER("nrd", &three, &i);
  EXPECT_EQ(i, 2);
  TIER_SETANY("conv_stop", &nine, &real_type, &two, &value, &two, "", &two);
  EXPECT_EQ(tier::parm().conv_stop, 0.25);
}

void set_integer(const char* name) {
  const int length = length_of(name), value = 2;
  TIER_SETINTEGER(name, &length, &value);
}

void set_any(const char* name, int type) {
  const int length = length_of(name), value = 2;
  const double real = 2.0;
  TIER_SETANY(name, &length, &type, &value, &real, &value, "", &value);
}

TEST(ParametersDeath, StopOnWrongNamesAndTypes) {
  const int six = 6;  // what stops the process speaks on standard output
  const auto stops = [](auto call) {
    EXPECT_EXIT((dup2(2, 1), call()), testing::ExitedWithCode(1),
                "(Unknown|unexpected type|not settable)[^\n]*\n.*(terminated!|Emergency STOP)");
  };
  stops([] { set_integer("NRD"); });
  stops([] { set_integer("omega_smo"); });
  stops([] { set_any("no_such", 1); });
  stops([] { set_any("levelx", 3); });
  stops([] { set_any("rho_ok", 1); });
  stops([&] {
    const double value = 1.0;
    TIER_SETCONTROL("levelx", &six, &value);
  });
  stops([&] {
    const double too_large = 1e10;
    TIER_SETCONTROL("iswtch", &six, &too_large);
  });
}

TEST(Parameters, ArePrintedInColumns) {
  const int all = 0, remaining = 1;
  testing::internal::CaptureStdout();
  TIER_EXTRAPRINT(&all);
  const std::string whole = testing::internal::GetCapturedStdout();
  testing::internal::CaptureStdout();
  TIER_EXTRAPRINT(&remaining);
  const std::string rest = testing::internal::GetCapturedStdout();

  EXPECT_THAT(whole, HasSubstr("List of all internal TIER variables\n"));
  EXPECT_THAT(whole, HasSubstr("\nnptmax:                   1500\n"));
  EXPECT_THAT(whole, HasSubstr("\nlevelx:                   -1000000000\n"));
  EXPECT_THAT(rest, HasSubstr("List of all remaining internal TIER variables\n"));
  EXPECT_THAT(rest, testing::Not(HasSubstr("\nlevelx:")));
}

}  // namespace
