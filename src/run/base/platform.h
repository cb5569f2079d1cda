// What the operating system is asked: clocks, processors, memory, the program's own file.
// Called wherever the program meets the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace keld {

/// CPU time of the process in milliseconds.
long processorClock();

/// Processors that this process may run on.
int processorCount();

/// Present local time, formatted as strftime does.
std::string localTime(const char* format);

/// Last-modified time of the program's own file as "year/month/day  hour:minute:second" without leading
/// zeros; empty when it is not available.
std::string programReleaseTime();

/// Physical memory in bytes that can be had now: the least of what the system tells as available and what the
/// control group of the process leaves.
std::uint64_t availableMemory();

/// Asks the system for large pages under storage that isn't written yet: a long matrix then costs fewer page
/// faults and misses of address translation. A wish; where it isn't granted nothing is lost.
void preferLargePages(void* begin, std::size_t bytes);

/// Starts a program by its path, without a shell, with the words behind its name, and waits for its end.
/// Returns its exit status, or -1 when it can't be started or is killed.
int runExternalProgram(const std::string& path, const std::vector<std::string>& words);

/// Opens whichever of the three standard descriptors is closed, so that no file of the run takes its place,
/// and lets writes to a console that has gone or beyond the file-size
/// limit fail instead of ending the process.
void secureStandardStreams();

}  // namespace keld
