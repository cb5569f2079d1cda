// Maker of the project's own parts: meshes of triangles with walls, ribs, holes and runners, and the working
// files of a whole job around them. Called by make_part, by the benchmarks and by tests.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace part_maker {

enum class Shape {
  plate,   // flat
  ribbed,  // plate with three ribs across, two along, six round holes, a sprue and a runner
  box      // open box: bottom and four walls
};

struct PartOptions {
  Shape shape = Shape::plate;
  double length = 120.0, width = 80.0;  // mm, along x and y
  double height = 12.0;                 // mm, of the ribs or of the box; the flat plate has none
  double wall = 2.0;                    // mm; ribs have 0.6 of it
  int triangles = 1000;                 // about so many; a mesh has a few percent more or less
};

/// What an element belongs to; it decides the temperatures of its sides.
enum class Zone : char { base, rib, wall, runner };

/// Nodes are indexed from 0 here, from 1 in the files. Walls meet at shared nodes.
struct Mesh {
  std::vector<std::array<double, 3>> nodes;   // mm
  std::vector<std::array<int, 3>> triangles;  // corners; the normal of the base points to +z
  std::vector<Zone> zone;                     // per triangle
  std::vector<double> thickness;              // mm, per triangle
  std::vector<std::array<int, 2>> runners;    // two-node elements
  std::vector<double> runnerDiameter;         // mm
  int gateNode = 0;
  std::vector<double> junctionX, junctionY;  // mm, lines of the base at which a rib or a wall stands

  /// A node by a number that a table holds, from 0.
  std::array<double, 3>& node(int number) { return nodes[static_cast<std::size_t>(number)]; }
  const std::array<double, 3>& node(int number) const { return nodes[static_cast<std::size_t>(number)]; }
};

/// The mesh of a part; triangles with an aspect below 10 for walls of similar edge lengths. Throws
/// std::invalid_argument when the size or the number of triangles makes no mesh.
Mesh makeMesh(const PartOptions& options);

/// Typical published values of a generic polymer, in cm, g, s; no grade of a producer.
enum class Polymer { pp, pa66_gf30 };

enum class Fields {
  uniform,  // one stress and one temperature everywhere (".PT1"): the answer of a flat part is a formula
  flow      // radial from the gate, warmer at the core side and at junctions (two-sided temperatures, ".CT1")
};

struct JobOptions {
  Fields fields = Fields::uniform;
  Polymer polymer = Polymer::pp;
  double stress1 = 3.0e7, stress2 = 3.0e7;  // dyn/cm2, of uniform fields, along x and y
  double temperature = 90.0;                // C, of uniform fields
  double ambient = 25.0;                    // C
  int solverChoice = 2;                     // 2 direct, other values multigrid
  int cycleLimit = 3000;
  int wallModel = 0;     // 1 wedge, 2 facet; 0: the settings have no section of KELD's own
  unsigned shuffle = 0;  // seed that mixes the order of the elements and the numbers of the nodes; 0: as made
};

/// Writes BASE.PG1, .RS1, .PT1 or .CT1, .PRC, .CPU and .MAL. Throws std::runtime_error naming the file that
/// cannot be written.
void writeJob(const std::string& base, const Mesh& mesh, const JobOptions& options);

/// Names as they stand on the command line of make_part.
std::optional<Shape> shapeNamed(std::string_view name);
std::optional<Polymer> polymerNamed(std::string_view name);
std::optional<Fields> fieldsNamed(std::string_view name);
std::optional<int> wallModelNamed(std::string_view name);

}  // namespace part_maker
