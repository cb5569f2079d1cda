// Centre, extent and axes of the part, checks of the header and the statistics that the report shows.
// Called by the input stage behind the main read of ".PG1".
#pragma once

#include <array>

#include "input/grid_centre.h"

namespace keld {

/// Sets gridCentre, the axis lengths and the axis order of `geometry` from the nodes of the triangles.
void partCentreAndAxes();

/// D4002 to D4005; the run ends behind the last of them when any has been reported.
void checkGeometry();

/// Aspect statistics and counts, through stream 1.
void echoGeometry();

/// Length of the part along one axis about the grid centre.
double axisLength(double centre, double least, double most);

/// Axis numbers (x = 1, y = 2, z = 3) of the major, middle and minor of three lengths.
std::array<int, 3> axisOrder(const std::array<double, 3>& length);

/// Circumradius over inradius of a triangle: a b c / (4 (s - a)(s - b)(s - c)), 2 for equal sides.
double triangleAspect(double a, double b, double c);

}  // namespace keld
