// One wedge element: constitutive matrix, stiffness and load; see the header.
#include "model/walls/wedge/wedge_element.h"

#include <algorithm>

namespace keld {

namespace {

using Block = std::array<double, 9>;  // 3 x 3 by rows

Block sumOf(const Block& a, const Block& b) {
  Block c;
  for (std::size_t i = 0; i < 9; ++i) c[i] = a[i] + b[i];
  return c;
}
Block negated(const Block& a) {
  Block c;
  for (std::size_t i = 0; i < 9; ++i) c[i] = -a[i];
  return c;
}
Block transposed(const Block& a) { return {a[0], a[3], a[6], a[1], a[4], a[7], a[2], a[5], a[8]}; }

/// D S(f), where the columns of S(f) are the strains of motions in x, y, z that vary with gradient f.
std::array<Vector3, 6> stressOfGradient(const Matrix6& d, const Vector3& f) {
  std::array<Vector3, 6> e;
  for (std::size_t m = 0; m < 6; ++m) {
    const auto& row = d[m];
    e[m] = {row[0] * f[0] + row[3] * f[1] + row[4] * f[2], row[1] * f[1] + row[3] * f[0] + row[5] * f[2],
            row[2] * f[2] + row[4] * f[0] + row[5] * f[1]};
  }
  return e;
}

/// transpose(S(f)) e
Block work(const Vector3& f, const std::array<Vector3, 6>& e) {
  Block h;
  for (std::size_t j = 0; j < 3; ++j) {
    h[j] = f[0] * e[0][j] + f[1] * e[3][j] + f[2] * e[4][j];
    h[3 + j] = f[0] * e[3][j] + f[1] * e[1][j] + f[2] * e[5][j];
    h[6 + j] = f[0] * e[4][j] + f[1] * e[5][j] + f[2] * e[2][j];
  }
  return h;
}

void symmetrise(Block& h) {
  h[3] = h[1];
  h[6] = h[2];
  h[7] = h[5];
}

void store(const Block& block, std::size_t nodeRow, std::size_t nodeColumn, ElementMatrix& k) {
  double* target = k.data() + 54 * nodeRow + 3 * nodeColumn;
  for (std::size_t i = 0; i < 3; ++i) std::copy_n(block.data() + 3 * i, 3, target + 18 * i);
}

/// The energy products of the nodes' gradients: in(i, j) of their in-plane parts, across(i) of node i's
/// in-plane part with the gradient of t, through of the latter with itself. Nodes 1 to 3 have in-plane
/// gradients
/// -(gr + gs), gr, gs.
struct GradientProducts {
  std::array<std::array<Block, 3>, 3> in;
  std::array<Block, 3> across;
  Block through;
};

GradientProducts gradientProducts(const WedgeGeometry& geometry, const Matrix6& d) {
  const double det = geometry.determinant;
  const auto& g = geometry.gradient;
  const auto scaled = [&](std::size_t q) { return stressOfGradient(d, det * g[q]); };
  const auto er = scaled(0), es = scaled(1), et = scaled(2);
  Block rr = work(g[0], er), ss = work(g[1], es), tt = work(g[2], et);
  for (Block* block : {&rr, &ss, &tt}) symmetrise(*block);
  const Block rs = work(g[0], es), sr = transposed(rs), rt = work(g[0], et), st = work(g[1], et);

  GradientProducts p;
  p.in[1][1] = rr;
  p.in[1][2] = rs;
  p.in[2][2] = ss;
  p.in[0][1] = negated(sumOf(rr, sr));
  p.in[0][2] = negated(sumOf(rs, ss));
  p.in[0][0] = sumOf(sumOf(rr, ss), sumOf(rs, sr));
  p.in[1][0] = transposed(p.in[0][1]);
  p.in[2][0] = transposed(p.in[0][2]);
  p.in[2][1] = sr;
  p.across = {negated(sumOf(rt, st)), rt, st};
  p.through = tt;
  return p;
}

void mirrorUpperTriangle(ElementMatrix& k) {
  for (std::size_t i = 1; i < 18; ++i) {
    for (std::size_t j = 0; j < i; ++j) k[18 * i + j] = k[18 * j + i];
  }
}

Vector3 times(const Matrix3& m, const Vector3& v) { return {dot(m[0], v), dot(m[1], v), dot(m[2], v)}; }

/// Integrals of the temperature change over the wedge (without the determinant), weighted by the lower and
/// the upper layer's share and by the three area coordinates.
struct ThermalMoments {
  double lower = 0.0, upper = 0.0;
  Vector3 corner{};
};

ThermalMoments thermalMoments(const ElementLoading& loading) {
  const IntegrationTable& table = integrationTable;
  const auto& theta = loading.nodeTemperature;
  ThermalMoments moments;
  for (std::size_t i = 0; i < table.r.size(); ++i) {
    const double r = table.r[i], s = table.s[i], l = 1.0 - r - s;
    const double below = l * theta[0] + r * theta[1] + s * theta[2];
    const double above = l * theta[3] + r * theta[4] + s * theta[5];
    double sum = 0.0;
    for (std::size_t j = 0; j < table.t.size(); ++j) {
      const double a = 0.5 * (1.0 - table.t[j]), b = 0.5 * (1.0 + table.t[j]);
      const double change = std::min(loading.ambientTemperature - (a * below + b * above), 0.0);
      const double weighted = table.triangleWeight[i] * table.thicknessWeight[j] * change;
      moments.lower += a * weighted;
      moments.upper += b * weighted;
      sum += weighted;
    }
    moments.corner = moments.corner + Vector3{l * sum, r * sum, s * sum};
  }
  return moments;
}

}  // namespace

WedgeGeometry wedgeGeometry(const std::array<Vector3, 3>& corner, double thickness, double meanJacobian) {
  const WedgeJacobian jacobian = wedgeJacobian(corner, wedgeOffset(corner, thickness).d);
  const double own = jacobian.determinant;
  const double inUse = own <= 0.0 && meanJacobian > 0.0 ? meanJacobian : own;
  return {referenceGradients(jacobian, inUse), inUse};
}

Matrix6 orientationAverage(const Matrix6& c, double a1) {
  const double a2 = 1.0 - a1;
  const double c11 = c[0][0], c22 = c[1][1], c12 = c[0][1], c23 = c[1][2], c44 = c[3][3];
  const double b1 = c11 + c22 - 2.0 * c12 - 4.0 * c44, b2 = c12 - c23, b3 = c44 + (c23 - c22) / 2.0;
  const double b4 = c23, b5 = (c22 - c23) / 2.0;
  Matrix6 m{};
  m[0][0] = b1 * a1 * a1 + 2.0 * b2 * a1 + 4.0 * b3 * a1 + b4 + 2.0 * b5;
  m[1][1] = b1 * a2 * a2 + 2.0 * b2 * a2 + 4.0 * b3 * a2 + b4 + 2.0 * b5;
  m[2][2] = b4 + 2.0 * b5;
  m[0][1] = m[1][0] = b1 * a1 * a2 + b2 * (a1 + a2) + b4;
  m[0][2] = m[2][0] = b2 * a1 + b4;
  m[1][2] = m[2][1] = b2 * a2 + b4;
  m[3][3] = b3 * (a1 + a2) + b5;
  m[4][4] = b3 * a1 + b5;
  m[5][5] = b3 * a2 + b5;
  return m;
}

Matrix6 strainRotation(const std::array<Vector3, 3>& axes) {
  Matrix6 t;
  for (std::size_t k = 0; k < 3; ++k) {
    const auto& a = axes[k];
    t[k] = {a[0] * a[0], a[1] * a[1], a[2] * a[2], a[0] * a[1], a[0] * a[2], a[1] * a[2]};
  }
  constexpr std::size_t pair[3][2] = {{0, 1}, {0, 2}, {1, 2}};
  for (std::size_t k = 0; k < 3; ++k) {
    const auto &a = axes[pair[k][0]], &b = axes[pair[k][1]];
    t[3 + k] = {2.0 * a[0] * b[0],         2.0 * a[1] * b[1],         2.0 * a[2] * b[2],
                a[0] * b[1] + a[1] * b[0], a[0] * b[2] + a[2] * b[0], a[1] * b[2] + a[2] * b[1]};
  }
  return t;
}

Matrix6 rotatedStiffness(const Matrix6& averaged, const std::array<Vector3, 3>& axes) {
  const Matrix6 te = strainRotation(axes);
  Matrix6 product;  // C' Te
  for (std::size_t j = 0; j < 6; ++j) {
    for (std::size_t i = 0; i < 3; ++i) {
      product[i][j] = averaged[i][0] * te[0][j] + averaged[i][1] * te[1][j] + averaged[i][2] * te[2][j];
      product[3 + i][j] = averaged[3 + i][3 + i] * te[3 + i][j];
    }
  }
  Matrix6 d;
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = i; j < 6; ++j) {
      double sum = 0.0;
      for (std::size_t m = 0; m < 6; ++m) sum += te[m][i] * product[m][j];
      d[i][j] = d[j][i] = sum;
    }
  }
  return d;
}

Vector6 rotatedExpansion(const Vector3& alpha, const std::array<Vector3, 3>& axes) {
  Vector6 beta{};
  for (std::size_t k = 0; k < 3; ++k) {
    const auto& a = axes[k];
    const Vector6 row = {a[0] * a[0],       a[1] * a[1],       a[2] * a[2],
                         2.0 * a[0] * a[1], 2.0 * a[0] * a[2], 2.0 * a[1] * a[2]};
    for (std::size_t i = 0; i < 6; ++i) beta[i] += alpha[k] * row[i];
  }
  return beta;
}

void formStiffness(const WedgeGeometry& geometry, const Matrix6& d, ElementMatrix& k) {
  const GradientProducts p = gradientProducts(geometry, d);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      // Lower node: gradient A G - L/2 gt, upper node: B G + L/2 gt, with shares A, B of the layers and area
      // coordinate L. Over the reference wedge AA and BB integrate to 1/3, AB to 1/6, A L/2 and B L/2 to
      // 1/12, and Li Lj / 4 to 1/48, for i = j to 1/24.
      const double through = i == j ? 1.0 / 24.0 : 1.0 / 48.0;
      const Block& in = p.in[i][j];
      const Block &acrossRow = p.across[i], acrossColumn = transposed(p.across[j]);
      Block lowerLower, upperUpper, lowerUpper;
      for (std::size_t m = 0; m < 9; ++m) {
        const double layer = in[m] / 3.0 + through * p.through[m];
        const double tilt = (acrossRow[m] + acrossColumn[m]) / 12.0;
        lowerLower[m] = layer - tilt;
        upperUpper[m] = layer + tilt;
        lowerUpper[m] = in[m] / 6.0 + (acrossRow[m] - acrossColumn[m]) / 12.0 - through * p.through[m];
      }
      if (i <= j) store(lowerLower, i, j, k);
      if (i <= j) store(upperUpper, 3 + i, 3 + j, k);
      store(lowerUpper, i, 3 + j, k);
    }
  }
  mirrorUpperTriangle(k);
}

// One compiled copy: a load formed alone has the bits of one formed beside its matrix.
[[gnu::noinline]] void formLoad(const WedgeGeometry& geometry, const ElementLoading& loading,
                                ElementLoad& f) {
  const auto& [gr, gs, gt] = geometry.gradient;
  const std::array<Vector3, 3> inPlane = {-1.0 * (gr + gs), gr, gs};
  const double det = geometry.determinant;
  const ThermalMoments thermal = loading.thermal ? thermalMoments(loading) : ThermalMoments{};
  const Vector3 thermalAcross = times(loading.unitThermal, gt), stressAcross = times(loading.stress, gt);
  for (std::size_t k = 0; k < 3; ++k) {
    const Vector3 thermalIn = times(loading.unitThermal, inPlane[k]);
    const Vector3 stressIn = times(loading.stress, inPlane[k]);
    for (std::size_t i = 0; i < 3; ++i) {
      // The shares of the layers integrate to 1/2 and half an area coordinate to 1/6.
      const double across = 0.5 * thermal.corner[k] * thermalAcross[i] - stressAcross[i] / 6.0;
      f[3 * k + i] = det * (thermal.lower * thermalIn[i] - 0.5 * stressIn[i] - across);
      f[9 + 3 * k + i] = det * (thermal.upper * thermalIn[i] - 0.5 * stressIn[i] + across);
    }
  }
}

Matrix3 stressTensor(double stress1, double stress2, const Vector3& d1, const Vector3& d2) {
  Matrix3 s;
  for (std::size_t i = 0; i < 3; ++i) s[i] = (stress1 * d1[i]) * d1 + (stress2 * d2[i]) * d2;
  return s;
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
