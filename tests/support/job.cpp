#include "support/job.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "places.h"

namespace keld::testing_support {

namespace fs = std::filesystem;

ScratchJob::ScratchJob(const std::string& stem) : stem_(stem) {
  std::string name = (fs::temp_directory_path() / "keld-job-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder: " + name);
  folder_ = name;
}

ScratchJob ScratchJob::copyOf(const fs::path& jobFolder, const std::string& stem) {
  ScratchJob job(stem);
  for (const auto& entry : fs::directory_iterator(jobFolder)) {
    if (entry.path().stem() != "job") continue;
    fs::copy_file(entry.path(), job.path(entry.path().extension().string()));
  }
  fs::copy(jobFolder / "install", job.install(), fs::copy_options::recursive);
  return job;
}

ScratchJob::ScratchJob(ScratchJob&& other) noexcept
    : folder_(std::move(other.folder_)), stem_(std::move(other.stem_)) {
  other.folder_.clear();
}

ScratchJob::~ScratchJob() {
  std::error_code ignored;
  if (!folder_.empty()) fs::remove_all(folder_, ignored);
}

std::string ScratchJob::read(const std::string& suffix) const { return readText(path(suffix)); }

void ScratchJob::write(const std::string& suffix, const std::string& text) const {
  std::ofstream(path(suffix), std::ios::binary) << text;
}

void ScratchJob::chooseSolver(int solverChoice) const {
  std::string text = read(".CPU");
  std::size_t line = text.find('\n', text.find("[Keld_ComputeData]"));
  for (int values = 0; values < 2 && line != std::string::npos; line = text.find('\n', line + 1)) {
    const std::size_t end = text.find('\n', line + 1), value = text.rfind('=', end);
    if (value == std::string::npos || value < line) continue;
    if (++values < 2) continue;
    text.replace(value + 1, text.find_first_of("\r\n", value) - value - 1,
                 " " + std::to_string(solverChoice));
    write(".CPU", text);
    return;
  }
  throw std::runtime_error("no value 2 in " + path(".CPU"));
}

ScratchJob::Outcome ScratchJob::run(const std::string& prefix, const std::string& redirection) const {
  const std::string command = prefix + " '" + places::program.string() + "' '" + base() + "' 1@ '" +
                              install() + "' 2@ " + redirection + " 2>&1";
  std::FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot start " + command);
  Outcome outcome;
  std::array<char, 4096> part;
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe)) {
    outcome.console.append(part.data(), count);
  }
  const int status = ::pclose(pipe);
  if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
  return outcome;
}

std::string readText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

Column<std::vector<double>> resultBlock(const std::string& resultsText, const std::string& tag) {
  const std::size_t start = resultsText.find("[" + tag + "]\n");
  if (start == std::string::npos) throw std::runtime_error("no block " + tag);
  const std::vector<std::string> lines =
      linesOf(resultsText.substr(start, resultsText.find("[EOF]", start) - start));
  int count = 0;
  if (std::sscanf(lines.at(1).c_str(), "   Glength= %d", &count) != 1) throw std::runtime_error("no Glength");
  Column<std::vector<double>> rows;
  for (const std::string& line : lines) {
    if (line[0] == '[' || line.find('=') != std::string::npos) continue;
    std::istringstream stream(line);
    int number = 0;
    stream >> number;
    rows.push_back({});
    if (number != rows.rows()) throw std::runtime_error("row out of order: " + line);
    for (double value; stream >> value;) rows.back().push_back(value);
  }
  if (rows.rows() != count) throw std::runtime_error("rows don't count to Glength in " + tag);
  return rows;
}

}  // namespace keld::testing_support
