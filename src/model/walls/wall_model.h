// The wall model: all that assembly, results and sink mark ask of a wall. The wedge and the facet fill it.
// Chosen once by the model stage; no stage knows which one it has.
#pragma once

#include <string>

#include "model/material/oriented_material.h"
#include "model/walls/element_matrix.h"
#include "model/walls/joining.h"

namespace keld {

/// What an element is made from. Units are cm, dyn/cm2, 1/K, K.
struct WallElement {
  int number = 0;  // of the part element
  std::array<Vector3, 3> corner{};
  double thickness = 0.0;
  std::array<Vector3, 3> axes{};  // orthonormal directions of the material
  Matrix6 stiffness{};            // averaged over the orientation, in `axes`
  Vector3 expansion{};            // along `axes`
  double stress1 = 0.0;           // frozen-in stress along axes[0]
  double stress2 = 0.0;           // and along axes[1]
  std::array<double, 2> side{};   // temperature of the lower and the upper side
  Vector6 nodeTemperature{};      // smoothed temperature at lower corners 1 to 3, then the upper ones
  double ambientTemperature = 0.0;
  bool thermal = false;  // the load of shrinkage stands beside that of the stress
};

/// Gathers an element from the tables; needs the model stage's steps before the walls.
WallElement wallElement(int element, bool thermal);

class WallModel {
 public:
  virtual ~WallModel() = default;

  /// As report and log name it.
  virtual const char* name() const = 0;

  /// What joins two patches of triangles into one piece, which is held at three nodes.
  virtual Joining joining() const = 0;

  /// Looks at the whole part, once, before the first element. A part that the model can't take ends the run.
  virtual void prepare() = 0;

  /// Stiffness and load of an element in global axes; k may be null where the load alone is wanted, which has
  /// the same bits. An element that can't be formed is marked by values that aren't finite. Any thread.
  virtual void form(const WallElement& element, ElementMatrix* k, ElementLoad& f) const = 0;

  /// Why an element can't be formed, as the end of a sentence; empty where the model has no words of its own.
  virtual std::string faultOf(const WallElement&) const { return {}; }

  /// Displacement of the mid surface from the same component of a mesh node's first and second triple.
  virtual double midSurface(double firstTriple, double secondTriple) const = 0;

  /// A mesh node's two triples in a rigid motion: shift, and turn about a middle from which the node is `arm`
  /// away, with half the wall there as `offset`; lengths in units of `unit` cm. Two layers of nodes move each
  /// with its own place.
  virtual std::array<Vector3, 2> rigidMotion(const Vector3& shift, const Vector3& turn, const Vector3& arm,
                                             const Vector3& offset, double unit) const;

  /// Thickness of a part element under in-mold and total displacement together, cm. Needs `solution`; reports
  /// D5015 of a triangle without area. Main thread only.
  virtual double deformedThickness(int element) const = 0;
};

/// The model in use; wedges until chooseWalls has run.
const WallModel& wallModel();

/// Takes the model that the job asks for, and names it where the job has KELD's own section. First step of
/// the model stage. Facets of a closed skin end the run.
void chooseWalls();

/// Prepares the model in use. Last step of the model stage.
void prepareWalls();

}  // namespace keld
