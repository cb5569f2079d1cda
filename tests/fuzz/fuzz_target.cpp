// The libFuzzer target of one reader; KELD_FUZZ_READER is its name.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/readers.h"
#include "run/base/failure.h"
#include "run/base/working_files.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (!std::freopen("/dev/null", "r", stdin) || !std::freopen("/dev/null", "w", stdout)) std::abort();
  keld::workingFiles.report = keld::workingFiles.log = "/dev/null";
  keld::fuzz::setTestLabels();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const keld::fuzz::Reader& reader = keld::fuzz::readerNamed(KELD_FUZZ_READER);
  try {
    reader.read(std::string(reinterpret_cast<const char*>(data), size));
  } catch (const keld::RunEnded&) {
    return 0;  // refused with a message, as it should be
  }
  return 0;
}
