// One wedge element: stiffness and load; see the header.
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

}  // namespace keld
