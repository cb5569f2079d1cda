// Systems with several functions: elasticity on regular grids and the analysis's own systems of made parts.
#pragma once

#include <string>

#include "part_maker.h"
#include "scalar_systems.h"

namespace bench {

/// Bilinear plane stress on m x m squares, trilinear solid on m x m x m cubes; Poisson's ratio 0.3, clamped
/// at x = 0, random load.
linear_system plane_stress(int m);
linear_system elastic_cube(int m);

/// The system of the one pass, with thermal shrinkage, of a made part with flow-like prior results.
linear_system part_system(const part_maker::PartOptions& part, const std::string& install);

}  // namespace bench
