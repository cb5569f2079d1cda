// Parts whose deformation is known from quadratic bricks; see the header.
#include "support/brick_cases.h"

#include <algorithm>
#include <cmath>

#include "input/mesh_tables.h"
#include "input/polymer.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "support/wall_parts.h"

namespace keld::testing_support {

namespace {

constexpr double ambient = 300.0;                                                       // K, of loadModel
constexpr double length = 12.0, width = 6.0, ribHeight = 1.0, ribAt = 1.5, rib = 0.12;  // cm
constexpr double boxLength = 14.0, boxWidth = 9.0, boxHeight = 3.5;                     // cm

int cells(double side, double edge) {
  return std::max(1, static_cast<int>(std::ceil(10.0 * side / edge - 1e-9)));
}

/// The base between the lines of the ribs, then the ribs.
WallPart ribbedPlate(double edge) {
  const std::vector<double> x = {-0.5 * length, 0.0, 0.5 * length};
  const std::vector<double> y = {-0.5 * width, -ribAt, 0.0, ribAt, 0.5 * width};
  std::vector<Sheet> sheets;
  for (std::size_t i = 0; i + 1 < x.size(); ++i)
    for (std::size_t j = 0; j + 1 < y.size(); ++j) {
      const double dx = x[i + 1] - x[i], dy = y[j + 1] - y[j];
      sheets.push_back({{x[i], y[j], 0}, {dx, 0, 0}, {0, dy, 0}, cells(dx, edge), cells(dy, edge)});
    }
  const int up = cells(ribHeight, edge);
  for (const double at : {-ribAt, ribAt})
    for (std::size_t i = 0; i + 1 < x.size(); ++i) {
      const double dx = x[i + 1] - x[i];
      sheets.push_back({{x[i], at, 0}, {dx, 0, 0}, {0, 0, ribHeight}, cells(dx, edge), up});
    }
  for (std::size_t j = 0; j + 1 < y.size(); ++j) {
    const double dy = y[j + 1] - y[j];
    sheets.push_back({{0, y[j], 0}, {0, dy, 0}, {0, 0, ribHeight}, cells(dy, edge), up});
  }
  return joinedSheets(sheets);
}

/// Base and four walls with their normals to the inside.
WallPart box(double edge) {
  const double x = 0.5 * boxLength, y = 0.5 * boxWidth, z = boxHeight;
  const int nx = 2 * cells(x, edge), ny = 2 * cells(y, edge), nz = cells(z, edge);
  return joinedSheets({{{-x, -y, 0}, {2 * x, 0, 0}, {0, 2 * y, 0}, nx, ny},
                       {{-x, -y, 0}, {0, 0, z}, {2 * x, 0, 0}, nz, nx},
                       {{-x, y, 0}, {2 * x, 0, 0}, {0, 0, z}, nx, nz},
                       {{-x, -y, 0}, {0, 2 * y, 0}, {0, 0, z}, ny, nz},
                       {{x, -y, 0}, {0, 0, z}, {0, 2 * y, 0}, nz, ny}});
}

struct Elastic {
  double e1, e2, nu12, nu23, g12, along, across;  // dyn/cm2, 1/K
};

void setPolymer(const Elastic& m) {
  PolymerRecord& polymer = polymerRecord[1];
  const auto set = [](CountedList& list, double first, double second) {
    list.value[1] = first;
    list.value[2] = second;
    list.count = 2;
  };
  set(polymer.modulus, m.e1, m.e2);
  set(polymer.poisson, m.nu12, m.nu23);
  set(polymer.thermalExpansion, m.along, m.across);
  polymer.shearModulus.value[1] = m.g12;
  polymer.shearModulus.count = 1;
}

constexpr Elastic isotropic = {2e10, 2e10, 0.4, 0.4, 2e10 / 2.8, 7e-5, 7e-5};
// With an orientation of 5/7 along and 2/7 across: 3e-5, 6e-5 and, across the wall, 8e-5.
constexpr Elastic unevenShrinkage = {2e10, 2e10, 0.4, 0.4, 2e10 / 2.8, 1e-5, 8e-5};
constexpr Elastic filled = {6e10, 3e10, 0.3, 0.4, 1.2e10, 2e-5, 6e-5};

bool upright(int e) {
  const auto z = [](int node) { return nodeTable.z[node]; };
  return z(elementTable.node1[e]) + z(elementTable.node2[e]) + z(elementTable.node3[e]) > 0.0;
}

/// Fibres along x in the base, along the ribs in these.
void setFibres(int e) {
  ResidualStressField& field = residualStressField;
  if (!upright(e)) return;
  const auto place = [&](int node) { return nodeTable.x[node]; };
  const bool across = std::abs(place(elementTable.node1[e])) + std::abs(place(elementTable.node2[e])) +
                          std::abs(place(elementTable.node3[e])) <
                      1e-9;
  field.direction1[e] = across ? Direction{0, 1, 0} : Direction{1, 0, 0};
  field.direction2[e] = {0, 0, 1};
  field.direction3[e] = across ? Direction{1, 0, 0} : Direction{0, -1, 0};
}

/// Cooling of an element's two sides, K, and whether a mean of it is left out of the answer.
std::array<double, 2> coolingOf(BrickCase which, bool ofRib) {
  switch (which) {
    case BrickCase::boxHotInside:
      return {0.0, 20.0};
    case BrickCase::hotRibs:
      return ofRib ? std::array{20.0, 20.0} : std::array{0.0, 0.0};
    case BrickCase::gradientInBase:
      return ofRib ? std::array{10.0, 10.0} : std::array{20.0, 0.0};
    default:
      return {100.0, 100.0};
  }
}

void setFields(BrickCase which, bool meanAlone) {
  const bool aniso = which == BrickCase::anisotropicShrinkage, fibre = which == BrickCase::fibreFilled;
  setPolymer(aniso ? unevenShrinkage : fibre ? filled : isotropic);
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    const bool ofRib = which != BrickCase::boxHotInside && upright(e);
    if (ofRib) elementTable.thickness[e] = rib;
    if (aniso) residualStressField.orientationValue[e] = 5.0 / 7.0;
    if (aniso || fibre) setFibres(e);
    const auto cooling = meanAlone ? std::array{10.0, 10.0} : coolingOf(which, ofRib);
    elementTemperatureField.sideTemperature1[e] = ambient + cooling[0];
    elementTemperatureField.sideTemperature2[e] = ambient + cooling[1];
  }
}

/// Displacement in mm at (x, y, z) > 0, averaged over the mirror images: no rigid motion is left in x and y,
/// and a shift alone in z.
Vector3 mirrored(const Deformation& d, const Vector3& p) {
  Vector3 mean{};
  for (const double a : {-1.0, 1.0})
    for (const double b : {-1.0, 1.0}) {
      const Vector3 u = d.at({a * p[0], b * p[1], p[2]});
      mean = mean + 2.5 * Vector3{a * u[0], b * u[1], u[2]};
    }
  return mean;
}

std::vector<double> quantities(BrickCase which, const Deformation& d) {
  const double middle = mirrored(d, {})[2];
  if (which == BrickCase::boxHotInside) {
    const double x = 0.5 * boxLength, y = 0.5 * boxWidth, z = boxHeight;
    const Vector3 rim = mirrored(d, {x, y, z}), base = mirrored(d, {x, y, 0});
    return {2.0 * mirrored(d, {0, y, z})[1],
            2.0 * mirrored(d, {x, 0, z})[0],
            2.0 * rim[0],
            2.0 * rim[1],
            2.0 * base[0],
            2.0 * base[1],
            middle - base[2]};
  }
  const double x = 0.5 * length, y = 0.5 * width;
  return {mirrored(d, {x, 0, 0})[2] - middle, mirrored(d, {0, y, 0})[2] - middle,
          mirrored(d, {x, y, 0})[2] - middle};
}

}  // namespace

const std::vector<BrickAnswer>& brickAnswers() {
  static const std::vector<BrickAnswer> answers = {
      {BrickCase::boxHotInside,
       "box, hot inside",
       {-1.602606, -0.6877422, -0.011512514, -0.0123045, 0.002626448, 0.003897886, -0.1990632},
       5.85},
      {BrickCase::hotRibs, "ribbed plate, hot ribs", {0.3520087, 0.0747278, 0.3451336}, 3.45},
      {BrickCase::gradientInBase,
       "ribbed plate, gradient in the base",
       {-0.03975932, -0.05846005, -0.3904436},
       1.85},
      {BrickCase::anisotropicShrinkage,
       "ribbed plate, anisotropic shrinkage",
       {-0.02234789, -0.1535003, -0.04291241},
       14.5},
      {BrickCase::fibreFilled, "ribbed plate, fibre-filled", {-0.03717494, -0.2164139, -0.08548831}, 10.5}};
  return answers;
}

std::vector<double> measured(BrickCase which, int wallModel, double edge) {
  const WallPart part = which == BrickCase::boxHotInside ? box(edge) : ribbedPlate(edge);
  const auto run = [&](bool meanAlone) {
    return quantities(which, deformed(part.mesh, wallModel, [&] { setFields(which, meanAlone); }));
  };
  std::vector<double> found = run(false);
  if (which != BrickCase::boxHotInside && which != BrickCase::gradientInBase) return found;
  const std::vector<double> mean = run(true);  // cooling can't be negative: the answers have a mean of 0
  for (std::size_t i = 0; i < found.size(); ++i) found[i] -= mean[i];
  return found;
}

double largestError(const std::vector<double>& found, const std::vector<double>& answer) {
  double difference = 0.0, largest = 0.0;
  for (std::size_t i = 0; i < answer.size(); ++i) {
    difference = std::max(difference, std::abs(found[i] - answer[i]));
    largest = std::max(largest, std::abs(answer[i]));
  }
  return 100.0 * difference / largest;
}

}  // namespace keld::testing_support
