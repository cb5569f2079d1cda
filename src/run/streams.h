// The message streams: console, report (".WD1") and log (".WLG1").
// All that a run tells goes through vPrintMessage. Text is UTF-8 throughout.
#pragma once

namespace keld {

/// Formats as printf does and sends the text by stream number:
///   0 console; 1 console and report ("<br>" before it), report opened for append and closed after the line;
///   2 report, opened and closed; -1 report, must be open, "<br>", closed after the line; -2 report, must be
///   open, stays open; -3 as -2 with "<br>"; 100 console and log. Any other number writes nothing.
[[gnu::format(printf, 2, 3)]] void vPrintMessage(int stream, const char* format, ...);

enum class OpenMode { empty, append };

/// Opens the report (the log) for writing, which empties it, or for appending; a failure is fatal.
void vOpenMessageFile(OpenMode mode);
void vOpenLogMessageFile(OpenMode mode);

/// Closes the handle if it is open.
void vCloseMessageFile();
void vCloseLogMessageFile();

}  // namespace keld
