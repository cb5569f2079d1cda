// Files of name=value lines: the parameter file of TIER and the input file of TIER_SIMPLE.
#pragma once

#include <string>

#include "tier/codes/call_arguments.h"

namespace tier {

/// Reads <filnam>.in, or else tier.in, where allow_filnam_in and allow_private_in are set: parameters and
/// arguments of the call. Without allow_private_in it clears allow_filnam_in and returns. A line that can't
/// be read ends the call with ierr 1.
void read_input_parms(call_arguments& call);

/// The name of the input file that exists, empty if there is none.
std::string input_file_name();

/// Reads one file into the parameters and the call; `simple` also knows
/// the names that are TIER_SIMPLE's alone.
void read_assignments(const std::string& file, call_arguments& call, bool simple);

/// Sets a code of TIER_SIMPLE by its name ("control" is matrix). False for another name.
bool set_control(call_arguments& call, const std::string& name, double value);

}  // namespace tier
