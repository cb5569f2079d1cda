// Joining of triangles to pieces: first across their edges, then the patches that this leaves.
// Called by the choice of the boundary nodes.
#include "model/restraint/pieces.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>
#include <vector>

#include "input/mesh_access.h"
#include "model/incidence.h"
#include "run/base/column.h"

namespace keld {

namespace {

/// Disjoint sets of the numbers 1 to n; the least number of a set stands for it.
class DisjointSets {
 public:
  explicit DisjointSets(int n) : above_(n) { std::iota(above_.begin(), above_.end(), 1); }
  int of(int i) {
    while (above_[i] != i) i = above_[i] = above_[above_[i]];
    return i;
  }
  void join(int i, int j) {
    const auto [low, high] = std::minmax({of(i), of(j)});
    above_[high] = low;
  }

 private:
  Column<int> above_;
};

void joinAtNodes(const IncidenceLists& trianglesAt, DisjointSets& sets) {
  for (int n = 1; n <= nodeTable.nodeCount; ++n)
    for (const int* e = trianglesAt.begin(n); e != trianglesAt.end(n); ++e)
      sets.join(*trianglesAt.begin(n), *e);
}

/// Joins triangles that have two nodes in common: at one of the nodes both hold the other.
void joinAtEdges(const IncidenceLists& trianglesAt, DisjointSets& sets) {
  Column<int> seenFrom(nodeTable.nodeCount, 0), triangle(nodeTable.nodeCount, 0);
  for (int n = 1; n <= nodeTable.nodeCount; ++n)
    for (const int* e = trianglesAt.begin(n); e != trianglesAt.end(n); ++e)
      for (const int other : cornerNodesOf(*e)) {
        if (other == n) continue;
        if (seenFrom[other] == n) sets.join(*e, triangle[other]);
        seenFrom[other] = n;
        triangle[other] = *e;
      }
}

/// Patches and the nodes at which several of them touch, as a graph between the two: vertices 1..patches
/// are patches, those behind them nodes.
struct Contacts {
  Column<int> root;                 // [1..patches] the triangle that stands for a patch
  Column<std::vector<int>> vertex;  // neighbours of each vertex
};

Contacts contactsOf(const IncidenceLists& trianglesAt, DisjointSets& sets, std::vector<int>& touching) {
  std::vector<std::pair<int, int>> pairs;  // node, root
  std::vector<int> here, stillTouching;
  Contacts contacts;
  for (const int n : touching) {
    here.clear();
    for (const int* e = trianglesAt.begin(n); e != trianglesAt.end(n); ++e) here.push_back(sets.of(*e));
    std::sort(here.begin(), here.end());
    here.erase(std::unique(here.begin(), here.end()), here.end());
    if (here.size() < 2) continue;
    stillTouching.push_back(n);
    for (const int root : here) {
      pairs.emplace_back(static_cast<int>(stillTouching.size()), root);
      contacts.root.push_back(root);
    }
  }
  touching.swap(stillTouching);
  std::sort(contacts.root.begin(), contacts.root.end());
  const auto end = std::unique(contacts.root.begin(), contacts.root.end());
  contacts.root.resize(end - contacts.root.begin());

  const int patches = contacts.root.rows();
  contacts.vertex.resize(patches + static_cast<int>(touching.size()));
  for (const auto& [node, root] : pairs) {
    const auto place = std::lower_bound(contacts.root.begin(), contacts.root.end(), root);
    const auto patch = static_cast<int>(place - contacts.root.begin()) + 1;
    contacts.vertex[patch].push_back(patches + node);
    contacts.vertex[patches + node].push_back(patch);
  }
  return contacts;
}

/// Joins all patches that have two nodes in common, which are the rings of four in the graph. Looked for from
/// each vertex in falling order of degree, the vertex then being left out, they cost little even where many
/// patches meet at a node (Chiba, Nishizeki, SIAM J. Comput. 14 (1985) 210-223).
/// Returns whether any were joined.
bool joinAtNodePairs(const Contacts& contacts, DisjointSets& sets) {
  const auto& vertex = contacts.vertex;
  const int patches = contacts.root.rows();
  Column<int> order(vertex.rows()), between(vertex.rows(), 0);
  std::vector<int> reached;
  std::iota(order.begin(), order.end(), 1);
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return vertex[a].size() > vertex[b].size(); });
  Column<char> gone(vertex.rows(), 0);
  bool joined = false;
  for (const int v : order) {
    reached.clear();
    for (const int u : vertex[v]) {
      if (gone[u]) continue;
      for (const int w : vertex[u]) {
        if (w == v || gone[w]) continue;
        if (between[w] == 0) {
          between[w] = u;
          reached.push_back(w);
          continue;
        }
        const auto [a, b] = v <= patches ? std::pair{v, w} : std::pair{between[w], u};
        sets.join(contacts.root[a], contacts.root[b]);
        joined = true;
      }
    }
    for (const int w : reached) between[w] = 0;
    gone[v] = 1;
  }
  return joined;
}

Pieces numbered(DisjointSets& sets) {
  Pieces pieces;
  pieces.ofElement.assign(elementTable.partElementCount, 0);
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const int root = sets.of(e);  // the first triangle of its piece
    pieces.ofElement[e] = root == e ? ++pieces.count : pieces.ofElement[root];
  }
  return pieces;
}

}  // namespace

Pieces findPieces(Joining rule) {
  const IncidenceLists trianglesAt = elementsAtNodes(false);
  DisjointSets sets(elementTable.elementCount);
  if (rule == Joining::byOneNode) {
    joinAtNodes(trianglesAt, sets);
    return numbered(sets);
  }
  joinAtEdges(trianglesAt, sets);
  std::vector<int> touching(static_cast<std::size_t>(nodeTable.nodeCount));
  std::iota(touching.begin(), touching.end(), 1);
  while (joinAtNodePairs(contactsOf(trianglesAt, sets, touching), sets)) continue;
  return numbered(sets);
}

}  // namespace keld
