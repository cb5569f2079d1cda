// The tools that the text inputs share: equals signs, echoes, title blocks and labelled value lines.
// Called by all readers of src/input and src/model.
#pragma once

#include "run/base/text_reader.h"

namespace keld {

/// Reads characters up to and including the first "=" and then one more.
void vSkipPastEquals(TextReader& file);

/// mode > 0: "<br>", then characters through "="; mode <= 0: through the line feed. |mode| of 1 or 2 copies
/// each character read, terminator included, to the open report; 0 skips silently.
void vEchoThrough(TextReader& file, int mode);

/// Reads lines until one contains "*/" and requires one "/*"; otherwise the title-format error ends the run.
void vCheckTitleBlock(TextReader& file);

/// The value that vReadValueLine read last. It keeps its former value where a rule says so.
extern double LastValue;

enum class ValueUse { echoed, used };

/// Reads one labelled value line (free text = string number, free text = flag, free text = value), echoes
/// label, value and unit into the open report. Returns 1, or 0 for an unknown string number above 30000,
/// whose line is left where it stands. A string number above 50000 stands for a title block of the string
/// table; LastValue is then -1. Where the value is used, text or a non-finite number in its place ends the
/// run; where it is only echoed, LastValue stays. A file that ends within the line ends the run in any case.
int vReadValueLine(TextReader& file, ValueUse use);

/// LastValue truncated toward zero; a value beyond the range of int ends the run. `what` names the value.
int lastValueAsInt(const TextReader& file, const char* what);

}  // namespace keld
