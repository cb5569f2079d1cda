// Triangles so thin that they spoil the system of equations.
// Called by the input stage, while elements have the numbers of the file.
#pragma once

namespace keld {

/// A triangle below this ratio of its shortest height to its longest edge
/// is a needle; an equilateral one has 0.87.
constexpr double leastHeightRatio = 0.01;

/// One warning that counts the needles and names the worst of them, worst first; silent where there are none.
void warnOfNeedles();

}  // namespace keld
