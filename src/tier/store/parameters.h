// The parameter store: one variable for each named parameter, made from parameters.def.
// Written by callers between calls of TIER; read by all routines. Accessors are in parameters.cpp.
#pragma once

#include <string>

namespace tier {

constexpr int unset_integer = -1000000000;
constexpr double unset_real = -2.0e50;

constexpr bool is_set(int value) { return value != unset_integer; }
constexpr bool is_set(double value) { return value > -1.0e50; }

/// The store. Logicals hold 0 or -1 for callers, here plain bool.
namespace parm {
#define TIER_INTEGER(name, NAME, initial, effect, meaning) extern int name;
#define TIER_REAL(name, NAME, initial, effect, meaning) extern double name;
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) extern bool name;
#define TIER_TEXT(name, NAME, width, initial, effect, meaning) extern std::string name;
#include "tier/api/parameters.def"
}  // namespace parm

/// Puts every parameter back to its default.
void reset_parameters();

}  // namespace tier
