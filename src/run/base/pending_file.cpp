// Opening, renaming and the removal at signals.
// Called by the results stage and by the model processing of skins.
#include "run/base/pending_file.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace keld {

namespace {

constexpr std::array ending_signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGABRT, SIGXCPU};
std::array<char, 4200> pathAtSignal{};  // empty: nothing to remove

extern "C" void removePendingFile(int number) {
  if (pathAtSignal[0] != '\0') ::unlink(pathAtSignal.data());
  ::raise(number);  // the first signal has put the ordinary end back
}

/// Signals that the process ignores or handles stay as they are.
void handleSignals(void (*from)(int), void (*to)(int)) {
  for (const int number : ending_signals) {
    struct sigaction former {};
    if (::sigaction(number, nullptr, &former) != 0 || former.sa_handler != from) continue;
    struct sigaction action {};
    action.sa_handler = to;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(number, &action, nullptr);
  }
}

}  // namespace

PendingFile::PendingFile(const std::string& path)
    : path_(path), pendingPath_(path + "." + std::to_string(::getpid())) {
  if (pendingPath_.size() < pathAtSignal.size()) {
    pendingPath_.copy(pathAtSignal.data(), pendingPath_.size());
    handleSignals(SIG_DFL, removePendingFile);
  }
  file_ = std::fopen(pendingPath_.c_str(), "wbe");
}

PendingFile::~PendingFile() {
  if (file_ != nullptr) std::fclose(file_);
  std::remove(pendingPath_.c_str());  // gone already where it is whole
  handleSignals(removePendingFile, SIG_DFL);
  pathAtSignal.fill('\0');
}

bool PendingFile::write(std::string_view text) {
  return text.empty() || std::fwrite(text.data(), 1, text.size(), file_) == text.size();
}

bool PendingFile::finish() {
  if (std::fflush(file_) != 0) return false;
  std::FILE* const file = file_;
  file_ = nullptr;
  return std::fclose(file) == 0 && std::rename(pendingPath_.c_str(), path_.c_str()) == 0;
}

}  // namespace keld
