// Writes docs/parameters.md from the list of TIER's parameters; with --check compares instead.
//   parameters_md FILE [--check]
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "parameter_rows.h"

namespace {

std::string shown_default(const ParameterRow& row) {
  if (row.initial.starts_with("unset_")) return "unset";
  if (row.type == "text") return row.initial.empty() ? "(blank)" : "\"" + row.initial + "\"";
  return row.initial;
}

std::string section(const std::string& title, const std::string& words, const std::string& effect) {
  std::string text =
      "\n## " + title + "\n\n" + words + "\n\n| name | type | default | meaning |\n|---|---|---|---|\n";
  for (const ParameterRow& row : parameter_rows())
    if (row.effect == effect)
      text +=
          "| `" + row.name + "` | " + row.type + " | " + shown_default(row) + " | " + row.meaning + " |\n";
  return text;
}

std::string page() {
  return "<!-- made by parameters_md from src/tier/api/parameters.def -->\n"
         "# Parameters of TIER\n\n"
         "Everything that the arguments of `TIER` don't carry is a named parameter. Each has "
         "`TIER_SET_<NAME>` and\n"
         "`TIER_GET_<NAME>` in `tier.h`, and access by its name through `TIER_SETINTEGER`, `TIER_SETDBLE`,\n"
         "`TIER_SETLOGICAL`, `TIER_SETCHAR` and the like. Values are kept until `TIER_LEAVE` puts them back "
         "to their\n"
         "defaults. \"unset\" (-1000000000 for integers, -2.0e50 for reals) leaves the choice to the "
         "strategy of the\n"
         "call. Range checks are made by the next call of `TIER`.\n" +
         section("Parameters that act", "They change what a call does.", "acts") +
         section("Prints, traces and units", "They change what is printed at most.", "prints") +
         section("Not released", "Away from its default such a parameter ends the call with `ierr` 80.",
                 "closed") +
         section("Without effect",
                 "They are kept for callers that set them. Away from its default such a parameter draws a "
                 "warning "
                 "with its name\nand `ierr` -50.",
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
