// The facet as a wall model: flat triangles of a shell with membrane and bending stiffness in plane stress.
// Made by the choice of the wall model.
#pragma once

#include "model/walls/facet/facet_element.h"
#include "model/walls/wall_model.h"
#include "run/base/column.h"

namespace keld {

/// A mesh node's first triple is the displacement of the mid surface,
/// its second the rotation vector times rotationLength.
class FacetWall final : public WallModel {
 public:
  const char* name() const override { return "facet"; }
  Joining joining() const override { return Joining::byOneNode; }
  void prepare() override;
  void form(const WallElement& element, ElementMatrix* k, ElementLoad& f) const override;
  std::string faultOf(const WallElement& element) const override;
  double midSurface(double displacement, double) const override { return displacement; }
  double deformedThickness(int element) const override;
  std::array<Vector3, 2> rigidMotion(const Vector3& shift, const Vector3& turn, const Vector3& arm,
                                     const Vector3&, double unit) const override {
    return {shift + cross(turn, arm), (rotationLength_ / unit) * turn};
  }

 private:
  Facet facetOf(const WallElement& element, FacetLoading& loading) const;
  double strainAcrossOf(int element, bool thermal, const Column<double>& displacement) const;

  double rotationLength_ = 1.0;          // cm, mean wall weighted by area
  Column<std::array<Vector3, 3>> turn_;  // [1..partElementCount] rad, see foldTurns
};

}  // namespace keld
