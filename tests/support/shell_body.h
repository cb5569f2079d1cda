// A body of facets with any freedoms held and any forces, solved by the direct solver: what the restraint of
// the analysis can't hold. Used by the tests of the facet.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <vector>

#include "model/walls/facet/facet_element.h"

namespace keld::testing_support {

/// Nodes and triangles count from 0. A freedom is 6 x node + component: displacement x, y, z, rotation x, y,
/// z times rotationLength.
class ShellBody {
 public:
  std::vector<Vector3> node;
  std::vector<std::array<std::size_t, 3>> triangle;
  std::set<std::size_t> held;           // freedoms
  std::map<std::size_t, double> force;  // on a freedom
  double rotationLength = 1.0;

  /// A grid of nx x ny cells with alternating diagonals; place(i / nx, j / ny) is a node's place.
  template <class Place>
  static ShellBody grid(std::size_t nx, std::size_t ny, const Place& place) {
    ShellBody body;
    for (std::size_t i = 0; i <= nx; ++i)
      for (std::size_t j = 0; j <= ny; ++j) body.node.push_back(place(share(i, nx), share(j, ny)));
    for (std::size_t i = 0; i < nx; ++i) {
      for (std::size_t j = 0; j < ny; ++j) {
        const std::size_t a = i * (ny + 1) + j, b = a + ny + 1, c = b + 1, d = a + 1;
        if ((i + j) % 2 == 1) {
          body.triangle.push_back({a, b, d});
          body.triangle.push_back({b, c, d});
        } else {
          body.triangle.push_back({a, b, c});
          body.triangle.push_back({a, c, d});
        }
      }
    }
    return body;
  }

  /// A triangle by numbers that a table or a file holds.
  void addTriangle(int a, int b, int c) {
    triangle.push_back(
        {static_cast<std::size_t>(a), static_cast<std::size_t>(b), static_cast<std::size_t>(c)});
  }

  /// Holds components of every node that `where` picks.
  template <class Where>
  void hold(const Where& where, std::initializer_list<std::size_t> components) {
    for (std::size_t n = 0; n < node.size(); ++n)
      if (where(node[n]))
        for (const std::size_t c : components) held.insert(6 * n + c);
  }

  std::size_t nearest(const Vector3& place) const;

  /// Adds a facet of the same wall and material for every triangle; `loadOf(t)` gives its loading, null none.
  template <class LoadOf>
  void form(double thickness, const Matrix6& stiffness, const Vector3& along, const LoadOf& loadOf) {
    for (std::size_t t = 0; t < triangle.size(); ++t) addFacet(t, thickness, stiffness, along, loadOf(t));
  }
  void form(double thickness, const Matrix6& isotropic) {
    for (std::size_t t = 0; t < triangle.size(); ++t) addFacet(t, thickness, isotropic, {1, 0, 0}, nullptr);
  }

  /// Displacements by freedom; a body that isn't held ends the run.
  std::vector<double> solve() const;

  /// Largest entry of K q over the largest of K times that of q, without what is held.
  double forceOf(const std::vector<double>& q) const;

 private:
  std::vector<std::map<std::size_t, double>> row_;

  static double share(std::size_t i, std::size_t n) {
    return static_cast<double>(i) / static_cast<double>(n);
  }
  void addFacet(std::size_t t, double thickness, const Matrix6& stiffness, const Vector3& along,
                const FacetLoading* loading);
};

/// Isotropic stiffness in the order xx, yy, zz, xy, xz, yz.
Matrix6 isotropicStiffness(double e, double nu);

}  // namespace keld::testing_support
