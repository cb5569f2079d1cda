// Stiffness and load of one element; see the header.
#include "model/walls/element_matrix.h"

#include "run/base/vector3.h"

namespace keld {

void mirrorUpperTriangle(ElementMatrix& k) {
  for (std::size_t i = 1; i < 18; ++i) {
    for (std::size_t j = 0; j < i; ++j) k[18 * i + j] = k[18 * j + i];
  }
}

void changeBasis(const std::array<bool, 6>& inFrame, const RestraintFrame& frame, ElementMatrix* k,
                 ElementLoad& f) {
  const std::array<Vector3, 3> axes = {frame.ex, frame.ey, frame.ez};
  for (std::size_t node = 0; node < 6; ++node) {
    if (!inFrame[node]) continue;
    const std::size_t first = 3 * node;
    const auto turn = [&](double& x, double& y, double& z) {
      const Vector3 v = {x, y, z};
      x = dot(axes[0], v);
      y = dot(axes[1], v);
      z = dot(axes[2], v);
    };
    turn(f[first], f[first + 1], f[first + 2]);
    if (k == nullptr) continue;
    for (std::size_t i = 0; i < 18; ++i) {
      turn((*k)[18 * i + first], (*k)[18 * i + first + 1], (*k)[18 * i + first + 2]);
    }
    for (std::size_t j = 0; j < 18; ++j) {
      turn((*k)[18 * first + j], (*k)[18 * (first + 1) + j], (*k)[18 * (first + 2) + j]);
    }
  }
  if (k != nullptr) mirrorUpperTriangle(*k);
}

}  // namespace keld
