// The facet as a wall model; see the header.
#include "model/walls/facet/facet_wall.h"

#include <algorithm>
#include <limits>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/walls/facet/fold_turns.h"
#include "model/walls/wedge/wedge_shape.h"
#include "run/base/failure.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

/// Wall thickness weighted by area, over the triangles that can be formed.
double meanWall() {
  double volume = 0.0, area = 0.0;
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const auto corner = cornersOf(e);
    const double own = 0.5 * norm(cross(corner[1] - corner[0], corner[2] - corner[0]));
    if (!(elementTable.thickness[e] > 0.0)) continue;
    volume += elementTable.thickness[e] * own;
    area += own;
  }
  return volume / area;  // the volume pass has found an element with a volume
}

Column<std::array<Vector3, 3>> turnsOfPart() {
  Column<std::array<int, 3>> triangle(elementTable.partElementCount);
  for (int e = 1; e <= elementTable.partElementCount; ++e) triangle[e] = cornerNodesOf(e);
  Column<Vector3> node(wedgeNumbering.wedgeNodeCount / 2);
  for (int n = 1; n <= node.rows(); ++n) node[n] = positionOf(n);
  return foldTurns(triangle, node);
}

/// A node all of whose triangles lack area or thickness has no stiffness at all.
void requireStiffNodes() {
  Column<char> stiff(wedgeNumbering.wedgeNodeCount / 2, 0);
  Column<int> element(stiff.rows(), 0);
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const bool formed = elementTable.thickness[e] > 0.0 && !wedgeOffset(cornersOf(e), 1.0).degenerate;
    for (const int n : cornerNodesOf(e)) {
      element[n] = e;
      if (formed) stiff[n] = 1;
    }
  }
  for (int n = 1; n <= stiff.rows(); ++n) {
    if (stiff[n]) continue;
    vFail(
        "\n !! Error !!  A corner of part element %d in \"%s\" belongs to no triangle with area and "
        "thickness: "
        "as facets they hold nothing there. Mend or remove these triangles.\n",
        element[n], workingFiles.pg1.c_str());
  }
}

bool formed(const WallElement& element, const Facet& facet) {
  return facet.shape.area > 0.0 && element.thickness > 0.0;
}

}  // namespace

void FacetWall::prepare() {
  requireStiffNodes();
  rotationLength_ = meanWall();
  turn_ = turnsOfPart();
}

Facet FacetWall::facetOf(const WallElement& element, FacetLoading& loading) const {
  Facet facet{facetShape(element.corner, element.axes[0]), element.thickness, rotationLength_, {}};
  if (!formed(element, facet)) return facet;
  Matrix3 axes;  // of the material, in those of the facet
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t i = 0; i < 3; ++i) axes[k][i] = dot(facet.shape.axes[i], element.axes[k]);
  }
  facet.material = planeStress(rotatedStiffness(element.stiffness, axes));
  const Matrix3 stress = stressTensor(element.stress1, element.stress2, axes[0], axes[1]);
  loading.stress = {stress[0][0], stress[1][1], stress[0][1]};
  loading.turn = turn_[element.number];
  if (!element.thermal) return facet;
  const Vector6 beta = rotatedExpansion(element.expansion, axes);
  const Vector3 inPlane = {beta[0], beta[1], beta[3]};
  const double lower = std::max(element.side[0] - element.ambientTemperature, 0.0);
  const double upper = std::max(element.side[1] - element.ambientTemperature, 0.0);
  loading.strain = (-0.5 * (lower + upper)) * inPlane;
  loading.curvature = (-(upper - lower) / element.thickness) * inPlane;
  loading.strainAcross = -0.5 * (lower + upper) * beta[2];
  return facet;
}

void FacetWall::form(const WallElement& element, ElementMatrix* k, ElementLoad& f) const {
  FacetLoading loading;
  const Facet facet = facetOf(element, loading);
  const bool whole = formed(element, facet);
  if (!whole || !facet.material.definite) {
    const double mark = whole ? std::numeric_limits<double>::quiet_NaN() : 0.0;
    f.fill(mark);
    if (k != nullptr) k->fill(mark);
    return;
  }
  ElementMatrix own;
  ElementMatrix& matrix = k != nullptr ? *k : own;
  if (k != nullptr || hasTurn(loading)) formFacetStiffness(facet, matrix);
  formFacetLoad(facet, loading, matrix, f);
}

std::string FacetWall::faultOf(const WallElement& element) const {
  FacetLoading loading;
  const Facet facet = facetOf(element, loading);
  if (!formed(element, facet) || facet.material.definite) return {};
  return "can't be formed as a facet: with no stress across the wall its stiffness isn't positive definite. "
         "Check the moduli and Poisson ratios in \"" +
         workingFiles.mal + "\".";
}

double FacetWall::strainAcrossOf(int element, bool thermal, const Column<double>& displacement) const {
  FacetLoading loading;
  const Facet facet = facetOf(wallElement(element, thermal), loading);
  const auto nodes = wedgeNodesOf(element);
  ElementLoad u;
  for (std::size_t i = 0; i < 6; ++i) {
    const double* const motion = &displacement[freedoms.nodeFirstDof[nodes[i]]];
    for (std::size_t c = 0; c < 3; ++c) u[3 * i + c] = motion[c];
  }
  return strainAcross(facet, loading, u);
}

double FacetWall::deformedThickness(int element) const {
  offsetVector(element);  // for its report alone
  const double thickness = elementTable.thickness[element];
  const auto corner = cornersOf(element);
  if (!(thickness > 0.0) || wedgeOffset(corner, thickness).degenerate) return thickness;
  const double inMold = strainAcrossOf(element, false, solution.displacementInMold);
  return thickness * (1.0 + inMold + strainAcrossOf(element, true, solution.displacementTotal));
}

}  // namespace keld
