// The parameters as a list: name, place, default, effect and meaning, for access by name, prints and checks.
// Read by the by-name entries, the parameter file, tier_input and the documentation tool.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace tier {

enum class parameter_effect { acts, prints, idle, closed };

struct parameters;
using parameter_member =
    std::variant<int parameters::*, double parameters::*, bool parameters::*, std::string parameters::*>;
using parameter_reference = std::variant<int*, double*, bool*, std::string*>;
using parameter_value = std::variant<int, double, bool, std::string_view>;

struct parameter_entry {
  std::string_view name;
  parameter_member member;
  parameter_value initial;
  int width;  // most characters of a text, else 0
  parameter_effect effect;
  std::string_view meaning;

  parameter_reference place() const;  // in the calling thread's context
  bool at_default() const;
  std::string text() const;          // the current value as text
  std::string initial_text() const;  // the default as text, "unset" for the markers
};

/// All parameters in the order of the list: integers, reals, logicals, texts.
std::span<const parameter_entry> parameter_list();

/// The entry of a name without its trailing blanks, null if there is none.
const parameter_entry* find_parameter(std::string_view name);

/// Without trailing blanks.
std::string_view trimmed(std::string_view text);

}  // namespace tier
