// make_part: writes one of the project's own parts as a job ready for keld. Called by a person, by the check
// of the example jobs and by benchmark scripts.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <span>
#include <stdexcept>

#include "part_maker.h"

namespace {

constexpr const char* usage =
    "make_part plate|ribbed|box BASE [options]     writes the working files BASE.*\n"
    "  --size LENGTHxWIDTH[xHEIGHT]  mm; the height is that of ribs or walls     (120x80x12)\n"
    "  --wall THICKNESS              mm                                          (2)\n"
    "  --triangles N                 about so many                               (1000)\n"
    "  --fields uniform|flow         prior-stage results                         (uniform for plate, else "
    "flow)\n"
    "  --polymer pp|pa66-gf30        generic polymer                             (pp for plate, else "
    "pa66-gf30)\n"
    "  --solver N                    2 direct, other values multigrid            (2)\n"
    "  --walls wedge|facet           wall model                                  (wedge, as the program's "
    "own)\n"
    "  --shuffle SEED                mixes element order and node numbers        (0: not)\n";

template <typename Number>
Number numberIn(std::string_view words, const char* what) {
  Number number{};
  const char* end = words.data() + words.size();
  const auto result = std::from_chars(words.data(), end, number);
  if (result.ec != std::errc{} || result.ptr != end)
    throw std::invalid_argument(std::string(what) + ": a number was expected, found \"" + std::string(words) +
                                "\"");
  return number;
}

template <typename Name>
Name need(std::optional<Name> name, const char* what, std::string_view words) {
  if (!name) throw std::invalid_argument(std::string("unknown ") + what + " \"" + std::string(words) + "\"");
  return *name;
}

void setSize(part_maker::PartOptions& part, std::string_view words) {
  for (double* side : {&part.length, &part.width, &part.height}) {
    const std::size_t cross = words.find('x');
    *side = numberIn<double>(words.substr(0, cross), "--size");
    if (cross == std::string_view::npos) return;
    words.remove_prefix(cross + 1);
  }
}

void run(std::span<char*> words) {
  using namespace part_maker;
  PartOptions part;
  JobOptions job;
  part.shape = need(shapeNamed(words[0]), "part", words[0]);
  if (part.shape != Shape::plate) {
    job.fields = Fields::flow;
    job.polymer = Polymer::pa66_gf30;
  }
  const std::string base = words[1];
  for (std::size_t k = 2; k < words.size(); k += 2) {
    const std::string_view option = words[k];
    if (k + 1 == words.size()) throw std::invalid_argument(std::string(option) + " needs a value");
    const std::string_view value = words[k + 1];
    if (option == "--size")
      setSize(part, value);
    else if (option == "--wall")
      part.wall = numberIn<double>(value, "--wall");
    else if (option == "--triangles")
      part.triangles = numberIn<int>(value, "--triangles");
    else if (option == "--fields")
      job.fields = need(fieldsNamed(value), "fields", value);
    else if (option == "--polymer")
      job.polymer = need(polymerNamed(value), "polymer", value);
    else if (option == "--solver")
      job.solverChoice = numberIn<int>(value, "--solver");
    else if (option == "--walls")
      job.wallModel = need(wallModelNamed(value), "wall model", value);
    else if (option == "--shuffle")
      job.shuffle = numberIn<unsigned>(value, "--shuffle");
    else
      throw std::invalid_argument("unknown option \"" + std::string(option) + "\"");
  }
  const Mesh mesh = makeMesh(part);
  writeJob(base, mesh, job);
  std::printf("%s: %zu triangles, %zu runner elements, %zu nodes\n", base.c_str(), mesh.triangles.size(),
              mesh.runners.size(), mesh.nodes.size());
}

}  // namespace

int main(int count, char** words) {
  if (count < 3) {
    std::fputs(usage, count == 2 && std::strcmp(words[1], "--help") == 0 ? stdout : stderr);
    return count == 2 && std::strcmp(words[1], "--help") == 0 ? 0 : 1;
  }
  try {
    run({words + 1, static_cast<std::size_t>(count - 1)});
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "make_part: %s\n", fault.what());
    return 1;
  }
  return 0;
}
