// The list of parameters, and values as text.
#include "tier/store/parameter_list.h"

#include <unordered_map>

#include "tier/store/formatted.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

constexpr auto acts = parameter_effect::acts, prints = parameter_effect::prints,
               idle = parameter_effect::idle, closed = parameter_effect::closed;

#define TIER_INTEGER(name, NAME, initial, effect, meaning) \
  parameter_entry{#name, &parameters::name, initial, 0, effect, meaning},
#define TIER_REAL(name, NAME, initial, effect, meaning) TIER_INTEGER(name, NAME, initial, effect, meaning)
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) TIER_INTEGER(name, NAME, initial, effect, meaning)
#define TIER_TEXT(name, NAME, width, initial, effect, meaning) \
  parameter_entry{#name, &parameters::name, std::string_view(initial), width, effect, meaning},
const parameter_entry list[] = {
#include "tier/api/parameters.def"
};

std::string as_text(int value) { return std::to_string(value); }
std::string as_text(bool value) { return value ? "true" : "false"; }
std::string as_text(std::string_view value) { return std::string(value); }
std::string as_text(double value) { return formatted("%.10g", value); }

bool is_unset(const parameter_value& v) {
  if (const int* i = std::get_if<int>(&v)) return !is_set(*i);
  if (const double* d = std::get_if<double>(&v)) return !is_set(*d);
  return false;
}

parameter_value current(const parameter_member& member) {
  return std::visit([](auto m) { return parameter_value(parm().*m); }, member);
}

}  // namespace

parameter_reference parameter_entry::place() const {
  return std::visit([](auto m) { return parameter_reference(&(parm().*m)); }, member);
}

bool parameter_entry::at_default() const { return current(member) == initial; }

std::string parameter_entry::text() const {
  return std::visit([](const auto& v) { return as_text(v); }, current(member));
}

std::string parameter_entry::initial_text() const {
  if (is_unset(initial)) return "unset";
  return std::visit([](const auto& v) { return as_text(v); }, initial);
}

std::span<const parameter_entry> parameter_list() { return list; }

const parameter_entry* find_parameter(std::string_view name) {
  static const auto by_name = [] {
    std::unordered_map<std::string_view, const parameter_entry*> names;
    for (const parameter_entry& p : list) names.emplace(p.name, &p);
    return names;
  }();
  const auto found = by_name.find(trimmed(name));
  return found == by_name.end() ? nullptr : found->second;
}

std::string_view trimmed(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

}  // namespace tier
