// Parts of flat walls that meet at edges; see the header.
#include "support/wall_parts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "input/prior_fields.h"
#include "input/process_record.h"
#include "model/model_stage.h"
#include "model/sink_mark.h"
#include "results/result_rows.h"

namespace keld::testing_support {

WallPart joinedSheets(const std::vector<Sheet>& sheets) {
  WallPart part;
  std::map<std::array<long, 3>, int> nodeAt;
  const auto nodeOf = [&](const Vector3& p) {
    const std::array<long, 3> key = {std::lround(p[0] * 1e6), std::lround(p[1] * 1e6),
                                     std::lround(p[2] * 1e6)};
    const auto [entry, isNew] = nodeAt.try_emplace(key, static_cast<int>(part.mesh.node.size()) + 1);
    if (isNew) part.mesh.node.push_back(p);
    return entry->second;
  };
  for (std::size_t s = 0; s < sheets.size(); ++s) {
    const Sheet& sheet = sheets[s];
    const auto at = [&](int i, int j) {
      return nodeOf(sheet.corner + (static_cast<double>(i) / sheet.cellsAlong) * sheet.along +
                    (static_cast<double>(j) / sheet.cellsAcross) * sheet.across);
    };
    for (int i = 0; i < sheet.cellsAlong; ++i) {
      for (int j = 0; j < sheet.cellsAcross; ++j) {
        const int a = at(i, j), b = at(i + 1, j), c = at(i + 1, j + 1), d = at(i, j + 1);
        const bool crossed = (i + j) % 2 == 1;
        part.mesh.triangle.push_back(crossed ? std::array{a, b, d} : std::array{a, b, c});
        part.mesh.triangle.push_back(crossed ? std::array{b, c, d} : std::array{a, c, d});
        part.sheetOf.insert(part.sheetOf.end(), 2, static_cast<int>(s));
      }
    }
  }
  return part;
}

Vector3 Deformation::at(const Vector3& where) const {
  const auto nearer = [&](const Vector3& a, const Vector3& b) {
    return distance(a, where) < distance(b, where);
  };
  return total[std::min_element(place.begin(), place.end(), nearer) - place.origin()];
}

Deformation deformed(const TestMesh& mesh, int wallModel, const std::function<void()>& setFields) {
  loadModel(mesh);
  processRecord.wallModel = wallModel;
  processRecord.solverChoice = 2;
  setFields();
  runModelStages();
  analysisDriver();
  sinkMark();
  Deformation result;
  for (const Vector3& place : mesh.node) {
    result.place.push_back(place);
    const int n = result.place.rows();
    const ResultRow total = resultRow(ResultBlock::main, n), inMold = resultRow(ResultBlock::residual, n);
    result.total.push_back({total[0], total[1], total[2]});
    result.inMold.push_back({inMold[0], inMold[1], inMold[2]});
    result.sinkMark.push_back(total[4]);
  }
  return result;
}

Column<Vector3> withoutRigidMotion(const Column<Vector3>& place, const Column<Vector3>& displacement) {
  const double count = place.rows();
  Vector3 centre{}, shift{};
  for (int n = 1; n <= place.rows(); ++n) {
    centre = centre + place[n] / count;
    shift = shift + displacement[n] / count;
  }
  // Rotation w of least squares: sum (|x|^2 1 - x x^T) w = sum x cross u.
  std::array<Vector3, 3> m{};
  Vector3 right{};
  for (int n = 1; n <= place.rows(); ++n) {
    const Vector3 x = place[n] - centre;
    right = right + cross(x, displacement[n] - shift);
    for (std::size_t i = 0; i < 3; ++i) {
      m[i][i] += dot(x, x);
      m[i] = m[i] - x[i] * x;
    }
  }
  const double det = dot(m[0], cross(m[1], m[2]));
  const Vector3 w = {dot(right, cross(m[1], m[2])) / det, dot(m[0], cross(right, m[2])) / det,
                     dot(m[0], cross(m[1], right)) / det};
  Column<Vector3> rest(place.rows());
  for (int n = 1; n <= place.rows(); ++n) rest[n] = displacement[n] - shift - cross(w, place[n] - centre);
  return rest;
}

}  // namespace keld::testing_support
