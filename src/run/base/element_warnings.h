// Warnings about single elements: the first of a kind are written out, the others counted.
// Called by the stages that look at every element.
#pragma once

namespace keld {

enum class ElementWarning { D4016, D5015, D5016 };

/// Messages of a kind that a run writes out.
constexpr int writtenElementWarnings = 100;

/// Sends the message through stream 1, or counts it where as many of its
/// kind have been written. Main thread only.
[[gnu::format(printf, 2, 3)]] void vWarnOfElement(ElementWarning kind, const char* format, ...);

/// One line for each kind of which messages were counted, and begins to count anew. Called at the end of a
/// run, a failed one too.
void vTellCountedWarnings();

}  // namespace keld
