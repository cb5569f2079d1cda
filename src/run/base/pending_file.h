// A file in the making: it stands beside its place until it is whole.
// Called by the results stage and by the model processing of skins.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace keld {

/// Written as `path`, a dot and the number of the process, so that two runs don't write into each other's;
/// takes its name when it is whole, and goes on every other end that the process can notice: a destructor, an
/// ending signal. One at a time. Failures are told by the results, errno says why.
class PendingFile {
 public:
  explicit PendingFile(const std::string& path);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  bool isOpen() const { return file_ != nullptr; }
  bool write(std::string_view text);
  /// Closes and renames; nothing can be written after it.
  bool finish();

 private:
  std::string path_, pendingPath_;
  std::FILE* file_ = nullptr;
};

}  // namespace keld
