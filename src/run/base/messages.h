// Texts of the numbered messages, made from messages.def: message::D4016 is the format for vPrintMessage or,
// where the run ends with it, for vFail.
#pragma once

namespace keld::message {

#define KELD_MESSAGE(code, ending, text) inline constexpr char code[] = text;
#include "run/base/messages.def"

/// Second lines of D1025 and D5014, through stream 1 like the first.
inline constexpr char D1025Second[] =
    "                    'filename.CT1/CT2/CT3'(from COOL) or'filename.PT1/PT2/PT3'(from FLOW-PACK) not "
    "found.\n";
inline constexpr char D5014Second[] =
    "                    May be 3-BC nodes is repeated or located in a line direction\n";

}  // namespace keld::message
