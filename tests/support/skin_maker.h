// A closed box skin in the tables: what a Shell run is given.
// Used by the shell tests and the shell benchmark.
#pragma once

#include <array>
#include <cstddef>
#include <map>

#include "input/mesh_tables.h"

namespace keld {

/// Triangles on all faces of a box of sides `size` cm with `cells` quadrilaterals along them. The partner of
/// a triangle on the top or bottom face is the one above or below it; side faces have none.
struct BoxSkin {
  std::array<double, 3> size;
  std::array<int, 3> cells;
  Column<int> partner;  // [1..elementCount]

  BoxSkin(const std::array<double, 3>& sides, const std::array<int, 3>& quadrilaterals)
      : size(sides), cells(quadrilaterals) {}

  void fillTables() {
    elementTable = {};
    nodeTable = {};
    partner = {};
    const int top = addFace(2, cells[2]), bottom = addFace(2, 0);
    for (std::size_t axis = 0; axis < 2; ++axis)
      for (const int at : {0, cells[axis]}) addFace(axis, at);
    for (int k = 0; k < 2 * cells[0] * cells[1]; ++k) {
      partner[top + k] = bottom + k;
      partner[bottom + k] = top + k;
    }
    const int rows = elementTable.node1.rows();
    elementTable.elementCount = elementTable.partElementCount = rows;
    nodeTable.nodeCount = nodeTable.x.rows();
    for (auto* c :
         {&elementTable.thickness, &elementTable.correctedThickness, &elementTable.nx, &elementTable.ny,
          &elementTable.nz, &elementTable.area, &elementTable.meanEdge, &elementTable.cornerCosine})
      c->assign(rows, 0.0);
    elementTable.thicknessScale.assign(rows, 1.0);
    elementTable.thickness.assign(rows, size[2]);
    geometry = {};
    geometry.thicknessFactor = geometry.coordinateFactor = 0.1;
    geometry.largestExtent = std::max({size[0], size[1], size[2]});
    geometry.smallestExtent = std::min({size[0], size[1], size[2]});
  }

 private:
  std::map<std::array<int, 3>, int> nodeAt_;

  int node(const std::array<int, 3>& place) {
    const auto [entry, isNew] = nodeAt_.try_emplace(place, nodeTable.x.rows() + 1);
    if (isNew) {
      nodeTable.x.push_back(size[0] * place[0] / cells[0]);
      nodeTable.y.push_back(size[1] * place[1] / cells[1]);
      nodeTable.z.push_back(size[2] * place[2] / cells[2]);
    }
    return entry->second;
  }

  int addFace(std::size_t axis, int at) {
    const int first = elementTable.node1.rows() + 1;
    const std::size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
    const bool outward = at > 0;
    for (int j = 0; j < cells[v]; ++j)
      for (int i = 0; i < cells[u]; ++i) {
        const auto corner = [&](int du, int dv) {
          std::array<int, 3> place;
          place[axis] = at;
          place[u] = i + du;
          place[v] = j + dv;
          return node(place);
        };
        addTriangle(corner(0, 0), corner(1, 0), corner(1, 1), outward);
        addTriangle(corner(0, 0), corner(1, 1), corner(0, 1), outward);
      }
    return first;
  }

  void addTriangle(int a, int b, int c, bool outward) {
    elementTable.node1.push_back(a);
    elementTable.node2.push_back(outward ? b : c);
    elementTable.node3.push_back(outward ? c : b);
    partner.push_back(0);
  }
};

}  // namespace keld
