// Choice of the three boundary nodes, in geometry numbers; declared with the other restraint stages.
#include <algorithm>
#include <array>
#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "input/process_record.h"
#include "model/model_tables.h"
#include "model/restraint/restraint.h"
#include "run/base/column.h"
#include "run/base/failure.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

constexpr int no_piece = 0, several_pieces = -1;

template <class Visit>
void forEachCorner(const Visit& visit) {
  for (int e = 1; e <= elementTable.partElementCount; ++e)
    for (const int node : cornerNodesOf(e)) visit(e, node);
}

/// Piece of each geometry node: a number from 1, several_pieces, or no_piece for a node of no triangle.
Column<int> piecesOfNodes(const Pieces& pieces) {
  Column<int> pieceOf(nodeTable.nodeCount, no_piece);
  forEachCorner([&](int e, int node) {
    int& piece = pieceOf[node];
    piece = piece == no_piece || piece == pieces.ofElement[e] ? pieces.ofElement[e] : several_pieces;
  });
  return pieceOf;
}

/// Nodes of each piece [1..count] that belong to no other, in element order and corner order.
Column<std::vector<int>> ownNodes(const Column<int>& pieceOfNode, int count) {
  Column<char> seen(pieceOfNode.rows(), 0);
  Column<std::vector<int>> nodes(count);
  forEachCorner([&](int, int node) {
    if (seen[node] || pieceOfNode[node] < 1) return;
    seen[node] = 1;
    nodes[pieceOfNode[node]].push_back(node);
  });
  return nodes;
}

Vector3 meanPosition(const std::vector<int>& nodes) {
  Vector3 sum{};
  for (int node : nodes) sum = sum + positionOf(node);
  return sum / static_cast<double>(nodes.size());
}

/// The earliest node nearest to a point.
int nearestTo(const Vector3& point, const std::vector<int>& nodes) {
  double best = 1e12;
  int result = nodes.front();
  for (int node : nodes) {
    const double d = distance(point, positionOf(node));
    if (d < best) {
      best = d;
      result = node;
    }
  }
  return result;
}

/// The earliest node farthest from another; that node itself when all lie at its place.
int farthestFrom(int first, const std::vector<int>& nodes) {
  double best = 0.0;
  int result = first;
  for (int node : nodes) {
    const double d = distance(positionOf(first), positionOf(node));
    if (d > best) {
      best = d;
      result = node;
    }
  }
  return result;
}

/// The latest node that spans the largest triangle with two others; the first when there is no third node.
int widestWith(int first, int second, const std::vector<int>& nodes) {
  const Vector3 p1 = positionOf(first), p2 = positionOf(second);
  double best = 0.0;
  int result = first;
  for (int node : nodes) {
    if (node == first || node == second) continue;
    const double area = triangleArea(p1, p2, positionOf(node));
    if (area >= best) {
      best = area;
      result = node;
    }
  }
  return result;
}

/// A node that the user gave must be one of a triangle; that its number is one of a node is known since
/// input.
void checkGivenNodes(const std::array<int, 4>& given, const Column<int>& pieceOfNode) {
  for (std::size_t i = 1; i <= 3; ++i) {
    if (pieceOfNode[given[i]] == no_piece) {
      vFail(
          "\n !! Error !!  Boundary node %zu of \"%s\" or \"%s\" is %d, which belongs to "
          "no triangle: a node of the part was expected, or 0 to have all three chosen.\n",
          i, workingFiles.cpu.c_str(), workingFiles.bc1.c_str(), given[i]);
    }
  }
}

/// The piece that holds all three given nodes, else no_piece.
int pieceOfGiven(const std::array<int, 4>& given, const Pieces& pieces) {
  Column<unsigned char> held(pieces.count, 0);  // a bit for each given node
  forEachCorner([&](int e, int node) {
    for (std::size_t i = 1; i <= 3; ++i)
      if (node == given[i]) held[pieces.ofElement[e]] |= static_cast<unsigned char>(1 << (i - 1));
  });
  for (int piece = 1; piece <= pieces.count; ++piece)
    if (held[piece] == 7) return piece;
  return no_piece;
}

BoundaryNodes chosenAmong(const std::vector<int>& nodes) {
  BoundaryNodes chosen;
  chosen.boundaryNode1 = nearestTo(meanPosition(nodes), nodes);
  chosen.boundaryNode2 = farthestFrom(chosen.boundaryNode1, nodes);
  chosen.boundaryNode3 = widestWith(chosen.boundaryNode1, chosen.boundaryNode2, nodes);
  return chosen;
}

void requireOwnNodes(const Column<std::vector<int>>& nodes, const Pieces& pieces) {
  if (pieces.count < 2) return;
  for (int e = 1; e <= elementTable.partElementCount; ++e) {
    const int piece = pieces.ofElement[e];
    if (nodes[piece].size() >= 3) continue;
    const auto corner = cornerNodesOf(e);
    vFail(
        "\n !! Error !!  The part of \"%s\" is in %d pieces, and the one with the triangle "
        "of nodes %d, %d and %d can't be held: three nodes were expected that belong to no "
        "other piece, it has %zu. Pieces that meet at single nodes need edges in common.\n",
        workingFiles.pg1.c_str(), pieces.count, corner[0], corner[1], corner[2], nodes[piece].size());
  }
}

void reportNodes(const BoundaryNodes& held) {
  vPrintMessage(1, "   Boundary node 1=   %-d\n", held.boundaryNode1);
  vPrintMessage(1, "   Boundary node 2=   %-d\n", held.boundaryNode2);
  vPrintMessage(1, "   Boundary node 3=   %-d\n\n", held.boundaryNode3);
}

void warnOfPieces(const Pieces& pieces, bool givenAreScattered) {
  constexpr int most_lines = 100;
  vPrintMessage(
      1,
      "\n !! Warning !!  The part is in %d pieces that don't hang together. Each is held at three nodes "
      "of its own, which alone say where it lies against the others. A part meant as one has nodes that "
      "aren't merged: merge those at one place.\n",
      pieces.count);
  if (givenAreScattered)
    vPrintMessage(1, "   The given boundary nodes lie in different pieces: nodes were chosen for each.\n");
  Column<int> triangles(pieces.count, 0);
  for (int e = 1; e <= elementTable.partElementCount; ++e) ++triangles[pieces.ofElement[e]];
  for (int p = 1; p <= std::min(pieces.count, most_lines); ++p) {
    const BoundaryNodes& held = boundaryNodes[p];
    vPrintMessage(1, "   Piece %d: triangles= %d, held at nodes %d, %d, %d\n", p, triangles[p],
                  held.boundaryNode1, held.boundaryNode2, held.boundaryNode3);
  }
  if (pieces.count > most_lines) vPrintMessage(1, "   Further pieces: %d\n", pieces.count - most_lines);
  vPrintMessage(1, "\n");
}

}  // namespace

void selectBoundaryNodes(Joining rule) {
  if (elementTable.partElementCount < 1) {
    vFail("\n !! Error !!  \"%s\" holds runner elements alone: at least one triangle was expected.\n",
          workingFiles.pg1.c_str());
  }
  const Pieces pieces = findPieces(rule);
  const Column<int> pieceOfNode = piecesOfNodes(pieces);
  const Column<std::vector<int>> nodes = ownNodes(pieceOfNode, pieces.count);
  const std::array<int, 4>& given = processRecord.bcNode;
  const bool areGiven = given[1] != 0 && given[2] != 0 && given[3] != 0;
  if (areGiven) checkGivenNodes(given, pieceOfNode);
  requireOwnNodes(nodes, pieces);

  const int pieceHeldByGiven = areGiven ? pieceOfGiven(given, pieces) : no_piece;
  boundaryNodes = {};
  for (int p = 1; p <= pieces.count; ++p) {
    BoundaryNodes held;
    if (p == pieceHeldByGiven) {
      held = {given[1], given[2], given[3]};
    } else {
      held = chosenAmong(nodes[p]);
    }
    boundaryNodes.push_back(held);
  }
  reportNodes(boundaryNodes[std::max(pieceHeldByGiven, 1)]);
  if (pieces.count > 1) warnOfPieces(pieces, areGiven && pieceHeldByGiven == no_piece);
}

}  // namespace keld
