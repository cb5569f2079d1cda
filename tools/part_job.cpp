// The working files of a job around a mesh: geometry, prior-stage results, process conditions, polymer.
// Units of the files: mm with a factor of 0.1 to cm, degrees Celsius, dyn/cm2.
#include <cmath>
#include <numeric>
#include <random>

#include "part_maker.h"
#include "text_file.h"

namespace part_maker {
namespace {

using Vector = std::array<double, 3>;

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
Vector scaled(const Vector& a, double factor) { return {factor * a[0], factor * a[1], factor * a[2]}; }
Vector unit(const Vector& a) { return scaled(a, 1.0 / std::sqrt(dot(a, a))); }

/// What the earlier stages would have left in one element.
struct ElementState {
  double stress1 = 0.0, stress2 = 0.0;  // dyn/cm2, along the first two axes
  double alignment = 1.0;               // first eigenvalue of the orientation tensor
  Vector axis1{1, 0, 0}, axis2{0, 1, 0}, axis3{0, 0, 1};
  double lower = 0.0, upper = 0.0;  // C, of the sides against and along the normal
};

/// Order of the elements and numbers of the nodes in the files.
struct Numbering {
  std::vector<int> element;  // place in the file to element: triangles from 0, runners behind them
  std::vector<int> node;     // node to number in the file, from 1
};

void shuffleVector(std::vector<int>& list, std::mt19937_64& random) {
  for (std::size_t k = list.size(); k > 1; --k) std::swap(list[k - 1], list[random() % k]);
}

Numbering numbersOf(const Mesh& mesh, unsigned seed) {
  Numbering numbers;
  numbers.element.resize(mesh.triangles.size() + mesh.runners.size());
  numbers.node.resize(mesh.nodes.size());
  std::iota(numbers.element.begin(), numbers.element.end(), 0);
  std::iota(numbers.node.begin(), numbers.node.end(), 1);
  if (seed != 0) {
    std::mt19937_64 random(seed);
    shuffleVector(numbers.element, random);
    shuffleVector(numbers.node, random);
  }
  return numbers;
}

class JobWriter {
 public:
  JobWriter(const std::string& base, const Mesh& mesh, const JobOptions& job)
      : base_(base), mesh_(mesh), job_(job), numbers_(numbersOf(mesh, job.shuffle)) {
    for (const Vector& node : mesh.nodes) {
      const Vector way = minus(node, gate());
      longestWay_ = std::max(longestWay_, std::sqrt(dot(way, way)));
    }
  }

  void writeGeometry() const {
    TextFile file(base_ + ".PG1");
    file << title << static_cast<long>(numbers_.element.size()) << " "
         << static_cast<long>(mesh_.nodes.size()) << " 0.1 0.1\n";
    long number = 0;
    for (const int element : numbers_.element) {
      file << ++number << " ";
      if (isRunner(element)) {
        const auto& runner = mesh_.runners[runnerPlace(element)];
        file << nodeNumber(runner[0]) << " " << nodeNumber(runner[1]) << " 0 ";
        file.fixed(mesh_.runnerDiameter[runnerPlace(element)], 4);
      } else {
        for (const int node : mesh_.triangles[place(element)]) file << nodeNumber(node) << " ";
        file.fixed(mesh_.thickness[place(element)], 4);
      }
      file << " 0 1 0\n";
    }
    for (std::size_t node = 0; node < mesh_.nodes.size(); ++node) {
      file << numbers_.node[node];
      for (const double coordinate : mesh_.nodes[node]) (file << " ").fixed(coordinate, 6);
      file << (static_cast<int>(node) == mesh_.gateNode ? " 1\n" : " 0\n");
    }
    file.close();
  }

  void writePriorResults() const {
    const bool uniform = job_.fields == Fields::uniform;
    TextFile stress(base_ + ".RS1"), temperature(base_ + (uniform ? ".PT1" : ".CT1"));
    stress << title;
    temperature << title;
    long number = 0;
    for (const int element : numbers_.element) {
      const ElementState state = isRunner(element) ? runnerState()
                                 : uniform         ? uniformState()
                                                   : flowState(element);
      stress << ++number;
      (stress << " ").fixed(state.stress1, 0) << " ";
      stress.fixed(state.stress2, 0) << " 0 1 ";
      stress.fixed(state.alignment, 4);
      for (const Vector& axis : {state.axis1, state.axis2, state.axis3})
        for (const double component : axis) (stress << " ").fixed(component, 6);
      stress << "\n";
      (temperature << number << " ").fixed(state.upper, 3);
      if (!uniform) (temperature << " ").fixed(state.lower, 3);
      temperature << "\n";
    }
    stress.close();
    temperature.close();
  }

 private:
  static constexpr std::string_view title = "/* made by make_part: generic part, lengths in mm */\n";

  bool isRunner(int element) const { return place(element) >= mesh_.triangles.size(); }
  std::size_t place(int element) const { return static_cast<std::size_t>(element); }
  std::size_t runnerPlace(int element) const { return place(element) - mesh_.triangles.size(); }
  int nodeNumber(int node) const { return numbers_.node[static_cast<std::size_t>(node)]; }
  const Vector& gate() const { return mesh_.node(mesh_.gateNode); }

  ElementState runnerState() const {
    ElementState state;
    state.lower = state.upper = 150.0;
    return state;
  }

  ElementState uniformState() const {
    ElementState state;
    state.stress1 = job_.stress1;
    state.stress2 = job_.stress2;
    state.lower = state.upper = job_.temperature;
    return state;
  }

  /// Flow spreads from the gate: fibres along the way from it, better aligned farther on; the stress grows
  /// along the way as packing pressure falls; the core side and the corners of the core cool last.
  ElementState flowState(int element) const {
    const auto& corner = mesh_.triangles[place(element)];
    const Vector &a = mesh_.nodes[place(corner[0])], &b = mesh_.nodes[place(corner[1])],
                 &c = mesh_.nodes[place(corner[2])];
    const Vector centre{(a[0] + b[0] + c[0]) / 3, (a[1] + b[1] + c[1]) / 3, (a[2] + b[2] + c[2]) / 3};
    const Vector way = minus(centre, gate());
    const double distance = std::sqrt(dot(way, way)), share = distance / longestWay_;

    ElementState state;
    state.axis3 = unit(cross(minus(b, a), minus(c, a)));
    Vector along = minus(way, scaled(state.axis3, dot(way, state.axis3)));
    if (dot(along, along) < 1e-6 * dot(minus(b, a), minus(b, a))) along = minus(b, a);
    state.axis1 = unit(along);
    state.axis2 = cross(state.axis3, state.axis1);
    state.alignment = 0.55 + 0.3 * (1.0 - std::exp(-distance / 20.0));
    state.stress1 = 1e4 * std::round(1e3 * (4.0 + 5.0 * share));  // dyn/cm2, 4 to 9 MPa
    state.stress2 = 1e4 * std::round(1e3 * (3.0 + 3.0 * share));
    setSides(state, centre, mesh_.zone[place(element)]);
    return state;
  }

  /// Cavity side 84 C, core side 92 C, 8 C more where the core makes a corner. The core lies above the base,
  /// beside the ribs, inside the walls.
  void setSides(ElementState& state, const Vector& centre, Zone zone) const {
    double toJunction = 1e30;
    if (zone == Zone::base) {
      for (const double x : mesh_.junctionX) toJunction = std::min(toJunction, std::abs(centre[0] - x));
      for (const double y : mesh_.junctionY) toJunction = std::min(toJunction, std::abs(centre[1] - y));
    } else {
      toJunction = centre[2];
    }
    const double core = 92.0 + 8.0 * std::exp(-toJunction / 4.0), cavity = 84.0;
    state.upper = zone == Zone::wall ? cavity : core;
    state.lower = zone == Zone::base ? cavity : core;
  }

  const std::string& base_;
  const Mesh& mesh_;
  const JobOptions& job_;
  Numbering numbers_;
  double longestWay_ = 0.0;  // mm from the gate
};

struct PolymerData {
  const char* name;
  double melt, mould, ejection;  // C
  double modulus;                // dyn/cm2, of the matrix
  double poisson, expansion;     // expansion in 1/K
  std::array<double, 13> pvt;    // two-domain Tait, cm3/g, K, dyn/cm2
  int filled;                    // 1: glass fibres
  double fillerPercent;          // by weight
};

constexpr PolymerData ppData{
    "PP",   230,
    40,     90,
    1.4e10, 0.4,
    1.0e-4, {1.27, 9e-4, 8e8, 4.5e-3, 1.18, 5e-4, 1.4e9, 3.5e-3, 403.15, 1.5e-8, 0.09, 0.15, 2e-9},
    0,      0};
constexpr PolymerData pa66Data{
    "PA66-GF30", 285,
    80,          90,
    2.8e10,      0.39,
    8.0e-5,      {1.03, 6.5e-4, 1.5e9, 5e-3, 0.95, 3.5e-4, 2.2e9, 3e-3, 533.15, 1.5e-8, 0.08, 0.08, 1.2e-9},
    1,           30};

const PolymerData& dataOf(Polymer polymer) { return polymer == Polymer::pp ? ppData : pa66Data; }

void valueLine(TextFile& file, const char* words, int string, double value) {
  file << "  " << words << " string= " << string << "  flag= 1  value= " << value << "\n";
}

void writeProcess(const std::string& path, const JobOptions& job) {
  const PolymerData& polymer = dataOf(job.polymer);
  TextFile file(path);
  file << "Process conditions of a generic part\n\n[Flpk_ProcessData] filling and packing\n";
  valueLine(file, "Filling time (s)", 20001, 1.2);
  valueLine(file, "Melt temperature (C)", 20002, polymer.melt);
  valueLine(file, "Mould temperature (C)", 20003, polymer.mould);
  valueLine(file, "Injection pressure (MPa)", 20004, 80);
  valueLine(file, "Flow rate (cm3/s)", 20005, 30);
  valueLine(file, "Packing time (s)", 20006, 5);
  valueLine(file, "Packing pressure (MPa)", 20007, 50);
  valueLine(file, "Cooling time (s)", 20008, 15);
  valueLine(file, "Mould opening time (s)", 20009, 5);
  valueLine(file, "Ejection temperature (C)", 20010, polymer.ejection);
  valueLine(file, "Filler present, 1 yes", 20011, polymer.filled);
  valueLine(file, "Filler percentage by 1 weight, 2 volume", 20012, 1);
  valueLine(file, "Filler percentage (%)", 20013, polymer.fillerPercent);
  valueLine(file, "Two polymers, 1 yes", 20014, 0);
  valueLine(file, "Melt temperature of the second polymer (C)", 20015, polymer.melt);
  file << "[EOF]\n\n[Keld_ProcessData]\n";
  valueLine(file, "Ambient temperature (C)", 21001, job.ambient);
  file << "[EOF]\n";
  file.close();
}

void writeSettings(const std::string& path, const JobOptions& job) {
  TextFile file(path);
  file << "Computing settings\n\n[Keld_ComputeData]\nOne value a line.\n"
          "Boundary nodes 0: chosen by the program.\n";
  const std::array<int, 10> values{0, job.solverChoice, 0, 0, 0, 0, 0, 0, 0, job.cycleLimit};
  constexpr std::array words{"Not used",        "Solver, 2 direct, else multigrid",
                             "Not used",        "Not used",
                             "Boundary node 1", "Boundary node 2",
                             "Boundary node 3", "Not used",
                             "Not used",        "Cycle limit"};
  for (std::size_t k = 0; k < values.size(); ++k)
    valueLine(file, words[k], k + 1 < values.size() ? 22001 + static_cast<int>(k) : 30500, values[k]);
  if (job.wallModel != 0) {
    file << "\n[Keld_Extension]\nKELD's own choices, one value a line.\nLines at the end may be missing.\n";
    valueLine(file, "Wall model, 1 wedge, 2 facet", 31001, job.wallModel);
  }
  file << "[EOF]\n";
  file.close();
}

void pairLine(TextFile& file, const char* words, double value) {
  file << "   " << words << " = 2  " << value << "  " << value << "\n";
}

void writePolymer(const std::string& path, const JobOptions& job) {
  const PolymerData& polymer = dataOf(job.polymer);
  TextFile file(path);
  file << "Generic " << polymer.name << ", typical published values, no grade of a producer\n\n[First_Kind]\n"
       << " Kind = 1\n Number = 1\n Producer = generic\n Grade = " << polymer.name << "\n"
       << " Units: cm, g, s, dyn/cm2, degrees Celsius in the two temperatures, kelvin elsewhere.\n"
       << " A record is a count and so many numbers.\n"
          " The records without a unit are not used by the analysis.\n";
  file << "   Melt and mould temperature (C) = 2  " << polymer.melt << "  " << polymer.mould << "\n";
  file << "   Property 2 = 0\n   Property 3 = 0\n   Property 4 = 0\n   Specific volume, two-domain Tait = 13";
  for (std::size_t k = 0; k < polymer.pvt.size(); ++k)
    file << (k % 5 == 0 ? "\n      " : "  ") << polymer.pvt[k];
  file << "\n   Property 6 = 0\n      0   property 7\n";
  pairLine(file, "Expansion along and across (1/K)", polymer.expansion);
  pairLine(file, "Modulus along and across (dyn/cm2)", polymer.modulus);
  pairLine(file, "Poisson ratio along and across", polymer.poisson);
  file << "   Property 11 = 0\n   Value 16 = 0\n   Value 17 = 0\n"
       << "   Filler: free, value 2, expansion (1/K), modulus (dyn/cm2), Poisson ratio, density (g/cm3)"
       << " = 6  0  25  5e-06  7.2e+11  0.22  2.55\n"
       << "   Value 19 = 0\n   Value 20 = 0\n   Values 21 = 0\n   Series 22 = 0\n   Series 23 = 0\n"
          "   Series 24 = 0\n"
       << "   Shear modulus (dyn/cm2), 0 entries for E / (2 (1 + nu)) = 0\n";
  file.close();
}

}  // namespace

void writeJob(const std::string& base, const Mesh& mesh, const JobOptions& job) {
  const JobWriter writer(base, mesh, job);
  writer.writeGeometry();
  writer.writePriorResults();
  writeProcess(base + ".PRC", job);
  writeSettings(base + ".CPU", job);
  writePolymer(base + ".MAL", job);
}

std::optional<Polymer> polymerNamed(std::string_view name) {
  if (name == "pp") return Polymer::pp;
  if (name == "pa66-gf30") return Polymer::pa66_gf30;
  return std::nullopt;
}

std::optional<int> wallModelNamed(std::string_view name) {
  if (name == "wedge") return 1;
  if (name == "facet") return 2;
  return std::nullopt;
}

std::optional<Fields> fieldsNamed(std::string_view name) {
  if (name == "uniform") return Fields::uniform;
  if (name == "flow") return Fields::flow;
  return std::nullopt;
}

}  // namespace part_maker
