// Exported access to the parameters: set and get of each, reset and the printed list.
#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "tier/api/tier.h"
#include "tier/store/info.h"
#include "tier/store/parameter_list.h"
#include "tier/store/parameters.h"

namespace {

constexpr int true_of_callers = -1;

void set_text(std::string& place, int limit, const char* text, int length) {
  place = tier::trimmed(std::string_view(text, static_cast<std::size_t>(std::clamp(length, 0, limit))));
}

void get_text(const std::string& place, char* text, int length) {
  for (int i = 0; i < length; ++i)
    text[i] = static_cast<std::size_t>(i) < place.size() ? place[static_cast<std::size_t>(i)] : ' ';
}

void set_codes(std::string& place, int limit, const int* codes, int& length) {
  if (length > limit) {
    length = -limit;
    return;
  }
  std::string text;
  for (int i = 0; i < length; ++i) text += static_cast<char>(codes[i]);
  place = tier::trimmed(text);
}

void get_codes(const std::string& place, int* codes, int& length) {
  const int used = static_cast<int>(place.size());
  if (used > length) {
    length = -used;
    return;
  }
  std::transform(place.begin(), place.end(), codes, [](char c) { return static_cast<unsigned char>(c); });
  length = used;
}

}  // namespace

// The preprocessor can't change case, so each line of the list has its name twice.
constexpr bool same_name(std::string_view lower, std::string_view upper) {
  return std::equal(lower.begin(), lower.end(), upper.begin(), upper.end(), [](char l, char u) {
    return u == (l >= 'a' && l <= 'z' ? static_cast<char>(l - 'a' + 'A') : l);
  });
}

#define TIER_NUMBER(name, NAME, type)                                     \
  static_assert(same_name(#name, #NAME));                                 \
  void TIER_SET_##NAME(const type* value) { tier::parm().name = *value; } \
  void TIER_GET_##NAME(type* value) { *value = tier::parm().name; }
#define TIER_INTEGER(name, NAME, initial, effect, meaning) TIER_NUMBER(name, NAME, int)
#define TIER_REAL(name, NAME, initial, effect, meaning) TIER_NUMBER(name, NAME, double)
#define TIER_LOGICAL(name, NAME, initial, effect, meaning)                    \
  static_assert(same_name(#name, #NAME));                                     \
  void TIER_SET_##NAME(const int* value) { tier::parm().name = *value != 0; } \
  void TIER_GET_##NAME(int* value) { *value = tier::parm().name ? true_of_callers : 0; }
#define TIER_TEXT(name, NAME, width, initial, effect, meaning)                                        \
  static_assert(same_name(#name, #NAME));                                                             \
  void TIER_SET_##NAME(const char* text, const int* length) {                                         \
    set_text(tier::parm().name, width, text, *length);                                                \
  }                                                                                                   \
  void TIER_GET_##NAME(char* text, const int* length) { get_text(tier::parm().name, text, *length); } \
  void TIER_ISET_##NAME(const int* codes, int* length) {                                              \
    set_codes(tier::parm().name, width, codes, *length);                                              \
  }                                                                                                   \
  void TIER_IGET_##NAME(int* codes, int* length) { get_codes(tier::parm().name, codes, *length); }
#include "tier/api/parameters.def"
#undef TIER_NUMBER

void TIER_RESET_HIDDEN(void) { tier::reset_parameters(); }

void TIER_EXTRAPRINT(const int* form) {
  static const std::set<std::string_view> in_input_list{"levelx", "nptmn", "nrd", "nru", "nrc", "ncg",
                                                        "nwt",    "ntr",   "ecg", "ewt", "etr", "np_opt"};
  const bool remaining = *form != 0;
  tier::message(
      remaining ? "List of all remaining internal TIER variables" : "List of all internal TIER variables", 1,
      1);
  constexpr std::size_t value_column = 27;
  for (const tier::parameter_entry& p : tier::parameter_list()) {
    if (remaining && in_input_list.contains(p.name)) continue;
    std::string line = std::string(p.name) + ":";
    line.resize(std::max(line.size() + 1, value_column - 1), ' ');
    tier::message(line + p.text());
  }
}
