// Joining of triangles to pieces: first across their edges, then the patches that this leaves.
// Called by the choice of the boundary nodes.
#include "model/restraint/pieces.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "input/mesh_access.h"
#include "model/incidence.h"

namespace keld {

namespace {

/// Disjoint sets of the numbers 0 to n; the least number of a set stands for it.
class DisjointSets {
 public:
  explicit DisjointSets(int n) : above_(static_cast<std::size_t>(n) + 1) {
    std::iota(above_.begin(), above_.end(), 0);
  }
  int of(int i) {
    while (above_[i] != i) i = above_[i] = above_[above_[i]];
    return i;
  }
  void join(int i, int j) {
    const auto [low, high] = std::minmax({of(i), of(j)});
    above_[high] = low;
  }

 private:
  std::vector<int> above_;
};

void joinAtNodes(const IncidenceLists& trianglesAt, DisjointSets& sets) {
  for (int n = 1; n <= nodeTable.nodeCount; ++n)
    for (const int* e = trianglesAt.begin(n); e != trianglesAt.end(n); ++e)
      sets.join(*trianglesAt.begin(n), *e);
}

/// Joins triangles that have two nodes in common: at one of the nodes both hold the other.
void joinAtEdges(const IncidenceLists& trianglesAt, DisjointSets& sets) {
  const auto size = static_cast<std::size_t>(nodeTable.nodeCount) + 1;
  std::vector<int> seenFrom(size, 0), triangle(size, 0);
  for (int n = 1; n <= nodeTable.nodeCount; ++n)
    for (const int* e = trianglesAt.begin(n); e != trianglesAt.end(n); ++e)
      for (const int other : cornerNodesOf(*e)) {
        if (other == n) continue;
        if (seenFrom[other] == n) sets.join(*e, triangle[other]);
        seenFrom[other] = n;
        triangle[other] = *e;
      }
}

/// Patches and the nodes at which several of them touch, as a graph between the two: vertices 0..patches-1
/// are patches, those behind them nodes.
struct Contacts {
  std::vector<int> root;                 // the triangle that stands for a patch
  std::vector<std::vector<int>> vertex;  // neighbours of each vertex
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
    for (const int root : here) pairs.emplace_back(static_cast<int>(stillTouching.size()), root);
    contacts.root.insert(contacts.root.end(), here.begin(), here.end());
    stillTouching.push_back(n);
  }
  touching.swap(stillTouching);
  std::sort(contacts.root.begin(), contacts.root.end());
  contacts.root.erase(std::unique(contacts.root.begin(), contacts.root.end()), contacts.root.end());

  const auto patches = static_cast<int>(contacts.root.size());
  contacts.vertex.resize(contacts.root.size() + touching.size());
  for (const auto& [node, root] : pairs) {
    const auto place = std::lower_bound(contacts.root.begin(), contacts.root.end(), root);
    const auto patch = static_cast<int>(place - contacts.root.begin());
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
  const auto patches = static_cast<int>(contacts.root.size());
  std::vector<int> order(vertex.size()), between(vertex.size(), -1), reached;
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return vertex[a].size() > vertex[b].size(); });
  std::vector<char> gone(vertex.size(), 0);
  bool joined = false;
  for (const int v : order) {
    reached.clear();
    for (const int u : vertex[v]) {
      if (gone[u]) continue;
      for (const int w : vertex[u]) {
        if (w == v || gone[w]) continue;
        if (between[w] < 0) {
          between[w] = u;
          reached.push_back(w);
          continue;
        }
        const auto [a, b] = v < patches ? std::pair{v, w} : std::pair{between[w], u};
        sets.join(contacts.root[a], contacts.root[b]);
        joined = true;
      }
    }
    for (const int w : reached) between[w] = -1;
    gone[v] = 1;
  }
  return joined;
}

Pieces numbered(DisjointSets& sets) {
  Pieces pieces;
  pieces.ofElement.assign(static_cast<std::size_t>(elementTable.partElementCount) + 1, 0);
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
