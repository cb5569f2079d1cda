// The parameter store: one variable for each named parameter, made from parameters.def.
// Written by callers between calls of TIER; read by all routines. Accessors are in parameters.cpp.
#pragma once

#include <string>

#include "tier/store/context.h"

namespace tier {

constexpr int unset_integer = -1000000000;
constexpr double unset_real = -2.0e50;

constexpr bool is_set(int value) { return value != unset_integer; }
constexpr bool is_set(double value) { return value > -1.0e50; }

/// Every parameter at its default. Logicals hold 0 or -1 for callers, here plain bool.
struct parameters {
#define TIER_INTEGER(name, NAME, initial, effect, meaning) int name = initial;
#define TIER_REAL(name, NAME, initial, effect, meaning) double name = initial;
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) bool name = initial;
#define TIER_TEXT(name, NAME, width, initial, effect, meaning) std::string name = initial;
#include "tier/api/parameters.def"
};

/// The store of the calling thread's context.
extern const per_context<parameters> parm;

/// Puts every parameter back to its default.
void reset_parameters();

}  // namespace tier
