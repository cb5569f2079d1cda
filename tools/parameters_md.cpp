// Writes docs/parameters.md from the list of TIER's parameters; with --check compares instead.
//   parameters_md FILE [--check]
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>

#include "parameter_rows.h"

namespace {

std::string shown_default(const ParameterRow& row) {
  std::string initial(row.initial);
  if (initial.starts_with("unset_")) return "unset";
  if (row.type == "text") return initial.empty() ? "(blank)" : "\"" + initial + "\"";
  return initial;
}

/// A row of a table: its cells between bars.
std::string cells(std::initializer_list<std::string_view> words) {
  std::string line = "|";
  for (const std::string_view word : words) line.append(" ").append(word).append(" |");
  return line + "\n";
}

std::string section(const std::string& title, const std::string& words, std::string_view effect) {
  std::string text = "\n## " + title + "\n\n" + words + "\n\n" +
                     cells({"name", "type", "default", "meaning"}) + "|---|---|---|---|\n";
  for (const ParameterRow& row : parameter_rows) {
    if (row.effect != effect) continue;
    text += cells({"`" + std::string(row.name) + "`", row.type, shown_default(row), row.meaning});
  }
  return text;
}

std::string page() {
  return R"(<!-- made by parameters_md from src/tier/api/parameters.def -->
# Parameters of TIER

Everything that the arguments of `TIER` don't carry is a named parameter. Each has `TIER_SET_<NAME>` and
`TIER_GET_<NAME>` in `tier.h`, and access by its name through `TIER_SETINTEGER`, `TIER_SETDBLE`,
`TIER_SETLOGICAL`, `TIER_SETCHAR` and the like. Values are kept until `TIER_LEAVE` puts them back to their
defaults. "unset" (-1000000000 for integers, -2.0e50 for reals) leaves the choice to the strategy of the
call. Range checks are made by the next call of `TIER`.
)" + section("Parameters that act", "They change what a call does.", "acts") +
         section("Prints, traces and units", "They change what is printed at most.", "prints") +
         section("Not released", "Away from its default such a parameter ends the call with `ierr` 80.",
                 "closed") +
         section(
             "Without effect",
             "They are kept for callers that set them. Away from its default such a parameter draws a warning"
             " with its name\nand `ierr` -50.",
             "idle");
}

}  // namespace

int main(int argc, char** argv) {
  const bool check = argc == 3 && std::string_view(argv[2]) == "--check";
  if (argc != 2 && !check) return std::fprintf(stderr, "usage: parameters_md FILE [--check]\n"), 1;
  if (!check) {
    std::ofstream out(argv[1]);
    out << page();
    return out.flush() ? 0 : (std::perror(argv[1]), 1);
  }
  std::ifstream in(argv[1]);
  const std::string found{std::istreambuf_iterator<char>(in), {}};
  if (found == page()) return 0;
  std::fprintf(stderr, "%s is not up to date: run parameters_md on it\n", argv[1]);
  return 1;
}
