// One facet; see the header.
#include "model/walls/facet/facet_element.h"

#include "model/walls/facet/bending.h"
#include "model/walls/facet/membrane.h"

namespace keld {

namespace {

Vector3 times(const Matrix3& m, const Vector3& v) { return {dot(m[0], v), dot(m[1], v), dot(m[2], v)}; }

/// transpose(r) v
Vector3 backTurned(const Matrix3& r, const Vector3& v) { return v[0] * r[0] + v[1] * r[1] + v[2] * r[2]; }

double upper(const Matrix9& k, std::size_t a, std::size_t b) { return a <= b ? k[a][b] : k[b][a]; }

/// transpose(r) x r of a 3 x 3 block, into the element's matrix.
void storeTurned(const Matrix3& r, const Matrix3& x, std::size_t row, std::size_t column, ElementMatrix& k) {
  Matrix3 xr;
  for (std::size_t i = 0; i < 3; ++i) xr[i] = backTurned(r, x[i]);
  for (std::size_t i = 0; i < 3; ++i) {
    const Vector3 values = r[0][i] * xr[0] + r[1][i] * xr[1] + r[2][i] * xr[2];
    double* target = k.data() + 18 * (3 * row + i) + 3 * column;
    for (std::size_t j = 0; j < 3; ++j) target[j] = values[j];
  }
}

/// The blocks of two corners: of the membrane (m, order u v r) and of bending (b, order w p q).
Matrix3 displacementBlock(const Matrix9& m, const Matrix9& b, std::size_t i, std::size_t j) {
  i *= 3, j *= 3;
  return {{{upper(m, i, j), upper(m, i, j + 1), 0.0},
           {upper(m, i + 1, j), upper(m, i + 1, j + 1), 0.0},
           {0.0, 0.0, upper(b, i, j)}}};
}
Matrix3 mixedBlock(const Matrix9& m, const Matrix9& b, std::size_t i, std::size_t j, double scale) {
  i *= 3, j *= 3;
  return {{{0.0, 0.0, scale * upper(m, i, j + 2)},
           {0.0, 0.0, scale * upper(m, i + 1, j + 2)},
           {scale * upper(b, i, j + 1), scale * upper(b, i, j + 2), 0.0}}};
}
Matrix3 rotationBlock(const Matrix9& m, const Matrix9& b, std::size_t i, std::size_t j, double scale) {
  i *= 3, j *= 3;
  return {{{scale * upper(b, i + 1, j + 1), scale * upper(b, i + 1, j + 2), 0.0},
           {scale * upper(b, i + 2, j + 1), scale * upper(b, i + 2, j + 2), 0.0},
           {0.0, 0.0, scale * upper(m, i + 2, j + 2)}}};
}

/// In-plane strain of a free facet.
Vector3 freeStrain(const Facet& facet, const FacetLoading& loading) {
  return loading.strain - times(facet.material.inverse, loading.stress);
}

/// Turns of the corners that a free facet would make beyond those of its neighbours, x c: angle x (strain
/// along the bent wall less strain across it).
ElementLoad freeTurns(const Facet& facet, const FacetLoading& loading) {
  const Vector3 along = freeStrain(facet, loading);
  const double across =
      loading.strainAcross + dot(facet.material.thinning, times(facet.material.inverse, loading.stress));
  ElementLoad turns{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double angle = norm(loading.turn[i]);
    if (angle == 0.0) continue;
    const Vector3 p = times(facet.shape.axes, (1.0 / angle) * cross(facet.shape.axes[2], loading.turn[i]));
    const double bent = along[0] * p[0] * p[0] + along[1] * p[1] * p[1] + along[2] * p[0] * p[1];
    const double scale = facet.rotationLength * (bent - across);
    for (std::size_t c = 0; c < 3; ++c) turns[9 + 3 * i + c] = scale * loading.turn[i][c];
  }
  return turns;
}

}  // namespace

void formFacetStiffness(const Facet& facet, ElementMatrix& k) {
  const FacetShape& shape = facet.shape;
  Matrix9 m, b;
  membraneStiffness(shape, facet.thickness, facet.material, m);
  bendingStiffness(curvaturePoints(shape), shape.area, facet.thickness, facet.material.q, b);
  const double once = 1.0 / facet.rotationLength, twice = once * once;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      if (i <= j) storeTurned(shape.axes, displacementBlock(m, b, i, j), i, j, k);
      storeTurned(shape.axes, mixedBlock(m, b, i, j, once), i, 3 + j, k);
      if (i <= j) storeTurned(shape.axes, rotationBlock(m, b, i, j, twice), 3 + i, 3 + j, k);
    }
  }
  mirrorUpperTriangle(k);
}

bool hasTurn(const FacetLoading& loading) {
  for (const Vector3& turn : loading.turn) {
    if (turn[0] != 0.0 || turn[1] != 0.0 || turn[2] != 0.0) return true;
  }
  return false;
}

// One compiled copy: a load formed alone has the bits of one formed beside its matrix.
[[gnu::noinline]] void formFacetLoad(const Facet& facet, const FacetLoading& loading, const ElementMatrix& k,
                                     ElementLoad& f) {
  const FacetShape& shape = facet.shape;
  const Lumping lumping = membraneLumping(shape);
  const Vector3 stress = facet.thickness * (times(facet.material.q, loading.strain) - loading.stress);
  std::array<double, 9> bending{};
  if (norm(loading.curvature) > 0.0) {
    bending =
        bendingLoad(curvaturePoints(shape), shape.area, facet.thickness, facet.material.q, loading.curvature);
  }
  const double once = 1.0 / facet.rotationLength;
  for (std::size_t i = 0; i < 3; ++i) {
    const Vector3 force = {dot(lumping[3 * i], stress), dot(lumping[3 * i + 1], stress), bending[3 * i]};
    const Vector3 moment = {once * bending[3 * i + 1], once * bending[3 * i + 2],
                            once * dot(lumping[3 * i + 2], stress)};
    const Vector3 globalForce = backTurned(shape.axes, force), globalMoment = backTurned(shape.axes, moment);
    for (std::size_t c = 0; c < 3; ++c) {
      f[3 * i + c] = globalForce[c];
      f[9 + 3 * i + c] = globalMoment[c];
    }
  }
  if (!hasTurn(loading)) return;
  const ElementLoad turns = freeTurns(facet, loading);
  for (std::size_t row = 0; row < 18; ++row) {
    for (std::size_t column = 9; column < 18; ++column) f[row] -= k[18 * row + column] * turns[column];
  }
}

double strainAcross(const Facet& facet, const FacetLoading& loading, const ElementLoad& u) {
  const FacetShape& shape = facet.shape;
  const Lumping lumping = membraneLumping(shape);
  Vector3 strain{};  // L^T q / A: the lumping is that of a unit thickness
  for (std::size_t i = 0; i < 3; ++i) {
    const Vector3 moved = {u[3 * i], u[3 * i + 1], u[3 * i + 2]};
    const Vector3 turned = {u[9 + 3 * i], u[10 + 3 * i], u[11 + 3 * i]};
    strain = strain + (dot(shape.axes[0], moved) / shape.area) * lumping[3 * i] +
             (dot(shape.axes[1], moved) / shape.area) * lumping[3 * i + 1] +
             (dot(shape.axes[2], turned) / (facet.rotationLength * shape.area)) * lumping[3 * i + 2];
  }
  return loading.strainAcross - dot(facet.material.thinning, strain - loading.strain);
}

}  // namespace keld
