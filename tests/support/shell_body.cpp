// A body of facets with any freedoms held and any forces; see the header.
#include "support/shell_body.h"

#include <algorithm>
#include <cmath>

#include "model/material/material.h"
#include "model/solvers/solve_direct.h"

namespace keld::testing_support {

std::size_t ShellBody::nearest(const Vector3& place) const {
  const auto nearer = [&](const Vector3& a, const Vector3& b) {
    return distance(a, place) < distance(b, place);
  };
  return static_cast<std::size_t>(std::min_element(node.begin(), node.end(), nearer) - node.begin());
}

void ShellBody::addFacet(std::size_t t, double thickness, const Matrix6& stiffness, const Vector3& along,
                         const FacetLoading* loading) {
  row_.resize(6 * node.size());
  const auto& corner = triangle[t];
  const Facet facet{facetShape({node[corner[0]], node[corner[1]], node[corner[2]]}, along), thickness,
                    rotationLength, planeStress(stiffness)};
  ElementMatrix k;
  ElementLoad f{};
  formFacetStiffness(facet, k);
  if (loading != nullptr) formFacetLoad(facet, *loading, k, f);
  const auto freedom = [&](std::size_t local) {
    return 6 * corner[local / 3 % 3] + 3 * (local / 9) + local % 3;
  };
  for (std::size_t i = 0; i < 18; ++i) {
    force[freedom(i)] += f[i];
    for (std::size_t j = 0; j < 18; ++j) row_[freedom(i)][freedom(j)] += k[18 * i + j];
  }
}

std::vector<double> ShellBody::solve() const {
  std::vector<int> number(row_.size(), 0);
  int free = 0;
  for (std::size_t i = 0; i < row_.size(); ++i)
    if (!held.contains(i)) number[i] = ++free;
  CompressedSystem system;
  Column<int> block;
  const auto add = [&](int column, double value) {
    system.columnIndex.push_back(column);
    system.matrixValue.push_back(value);
  };
  for (std::size_t i = 0; i < row_.size(); ++i) {
    if (number[i] == 0) continue;
    system.rowStart.push_back(system.columnIndex.rows() + 1);
    add(number[i], row_[i].at(i));
    for (const auto& [j, value] : row_[i])
      if (j != i && number[j] > 0) add(number[j], value);
    const auto found = force.find(i);
    system.rowLoad.push_back(found == force.end() ? 0.0 : found->second);
    block.push_back(static_cast<int>(i / 6) + 1);
  }
  system.rowStart.push_back(system.columnIndex.rows() + 1);
  Column<double> unknown(free);
  std::vector<double> all(row_.size(), 0.0);
  DirectSolver(system, block, 2000, "/tmp").solve(unknown);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = number[i] > 0 ? unknown[number[i]] : 0.0;
  return all;
}

double ShellBody::forceOf(const std::vector<double>& q) const {
  double worst = 0.0, stiffest = 0.0, longest = 0.0;
  for (std::size_t i = 0; i < row_.size(); ++i) {
    double sum = 0.0;
    for (const auto& [j, value] : row_[i]) sum += value * q[j];
    worst = std::max(worst, std::abs(sum));
    stiffest = std::max(stiffest, row_[i].at(i));
    longest = std::max(longest, std::abs(q[i]));
  }
  return worst / (stiffest * longest);
}

Matrix6 isotropicStiffness(double e, double nu) {
  const double shear = e / (2.0 * (1.0 + nu));
  return stiffnessOf({.e11 = e, .e22 = e, .g12 = shear, .g23 = shear, .nu12 = nu, .nu23 = nu});
}

}  // namespace keld::testing_support
