// The wedge as a wall model: one six-node solid wedge is the whole wall.
// Made by the choice of the wall model.
#pragma once

#include "model/walls/wall_model.h"

namespace keld {

/// A mesh node's triples of unknowns are the displacements of its lower and its upper node.
class WedgeWall final : public WallModel {
 public:
  const char* name() const override { return "wedge"; }
  Joining joining() const override { return Joining::byTwoNodes; }  // one common node is a hinge
  void prepare() override {}
  void form(const WallElement& element, ElementMatrix* k, ElementLoad& f) const override;
  double midSurface(double lower, double upper) const override { return (lower + upper) * 0.5; }
  double deformedThickness(int element) const override;
};

}  // namespace keld
