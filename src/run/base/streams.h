// The message streams: console, report (".WD1") and log (".WLG1").
// All that a run tells goes through vPrintMessage. Text is UTF-8 throughout.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

namespace keld {

/// Formats as printf does and sends the text by stream number:
///   0 console; 1 console and report ("<br>" before it), report opened for append and closed after the line;
///   2 report, opened and closed; -1 report, must be open, "<br>", closed after the line; -2 report, must be
///   open, stays open; -3 as -2 with "<br>"; 100 console and log. Any other number writes nothing.
/// Where a section reader holds the report open, streams 1 and 2 write through its handle and leave it open.
/// A report or log that can't take the text (a full disk) ends the run.
[[gnu::format(printf, 2, 3)]] void vPrintMessage(int stream, const char* format, ...);

/// Bytes as they are into the open report.
void vWriteReport(std::string_view bytes);

enum class OpenMode { empty, append };

/// Opens the report (the log) for writing, which empties it, or for appending; a failure is fatal.
void vOpenMessageFile(OpenMode mode);
void vOpenLogMessageFile(OpenMode mode);

/// Closes the handle if it is open.
void vCloseMessageFile();
void vCloseLogMessageFile();

/// Opens the report for append and closes it on every way out; section readers hold one.
class ReportSection {
 public:
  ReportSection() { vOpenMessageFile(OpenMode::append); }
  ReportSection(const ReportSection&) = delete;
  ReportSection& operator=(const ReportSection&) = delete;
  ~ReportSection() noexcept(false);  // a report that is lost ends the run here too
};

/// The text that printf would write.
std::string formatted(const char* format, std::va_list arguments);

}  // namespace keld
