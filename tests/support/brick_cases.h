// Parts whose deformation is known from quadratic bricks, and what a wall model says of them.
// Used by the tests of the facet (coarse meshes) and by the benchmark of the walls (all meshes).
#pragma once

#include <string>
#include <vector>

namespace keld::testing_support {

/// Walls of 2 mm, polymer of E 2000 MPa and Poisson ratio 0.4 unless it is filled. A box of 140 x 90 x 35 mm,
/// or a plate of 120 x 60 mm with two ribs along it and one across, 10 mm high and 1.2 mm thick; z is up, the
/// origin in the middle of the base.
enum class BrickCase { boxHotInside, hotRibs, gradientInBase, anisotropicShrinkage, fibreFilled };

struct BrickAnswer {
  BrickCase which;
  std::string name;
  std::vector<double> answer;  // mm, of quadratic bricks (CalculiX 2.20, C3D20R): the measured quantities
  double allowed;  // % of the largest answer: error of an independent program's facets with edges of 7 walls,
                   // known to its last digit but for half a unit of it
};
const std::vector<BrickAnswer>& brickAnswers();

/// The quantities of a case in mm, less every rigid motion, by wedge_walls or facet_walls, edges of at most
/// `edge` mm along the walls. Box: width and length at the middle of the rim, both at its corners and at the
/// base's, how deep the middle of the base lies below its corners. Ribs: how much higher than the middle of
/// the base lie the ends of its long axis, of its short axis, its corners.
std::vector<double> measured(BrickCase which, int wallModel, double edge);

/// Largest difference in % of the largest answer.
double largestError(const std::vector<double>& found, const std::vector<double>& answer);

}  // namespace keld::testing_support
