// The list of TIER's parameters as text, for the tools that write documents and interfaces from it.
#pragma once

#include <string_view>

/// One parameter: type "integer", "real", "logical" or "text", and the words of its line in the list.
struct ParameterRow {
  std::string_view name, upper_name, type, initial, effect, meaning;
};

/// A table of constants: as strings made at run time, its rows would take seconds to compile.
inline constexpr ParameterRow parameter_rows[] = {
#define TIER_INTEGER(name, NAME, initial, effect, meaning) \
  {#name, #NAME, "integer", #initial, #effect, meaning},
#define TIER_REAL(name, NAME, initial, effect, meaning) {#name, #NAME, "real", #initial, #effect, meaning},
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) \
  {#name, #NAME, "logical", #initial, #effect, meaning},
#define TIER_TEXT(name, NAME, width, initial, effect, meaning) \
  {#name, #NAME, "text", initial, #effect, meaning},
#include "tier/api/parameters.def"
};
