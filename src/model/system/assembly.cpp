// Assembly of the reduced system from the elements of the wall; see the header.
// A thread owns a range of nodes: it forms every element that holds one of them and adds its rows there, in
// element order. So every sum has one order whatever the number of threads, no thread waits for another, and
// an element is formed once, or once more at the border of two ranges, and at most three times.
#include "model/system/assembly.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "input/mesh_access.h"
#include "input/mesh_tables.h"
#include "model/model_tables.h"
#include "model/restraint/restraint.h"
#include "model/system/loads.h"
#include "model/system/pattern.h"
#include "model/walls/wall_model.h"
#include "run/base/failure.h"
#include "run/base/thread_place.h"
#include "run/base/working_files.h"

namespace keld {

namespace {

std::vector<int> turnedRows;  // rows multiplied by -1 for their negative diagonal; written by assemblePass

/// Unknowns of boundary nodes 2 and 3 are those of the frame of their piece.
void turnToFrames(const std::array<int, 6>& nodes, ElementMatrix* k, ElementLoad& f) {
  for (std::size_t i = 0; i < 6; ++i) {
    const int node = nodes[i];
    if (unknownsOf(freedoms.nodeRestraint[node]) % 3 == 0) continue;
    std::array<bool, 6> inFrame{};
    inFrame[i] = true;
    changeBasis(inFrame, restraintFrames[freedoms.nodeFrame[node]], k, f);
  }
}

/// Forms an element from the tables; k may be null where the load alone is wanted.
void formElement(int element, bool thermal, ElementMatrix* k, ElementLoad& f) {
  wallModel().form(wallElement(element, thermal), k, f);
  const auto nodes = wedgeNodesOf(element);
  turnToFrames(nodes, k, f);
}

/// Lower nodes first..last and their mates: rows that one thread writes.
struct NodeRange {
  int first, last;
  bool holds(int lowerNode) const { return first <= lowerNode && lowerNode <= last; }
};

/// Adds the rows of an element that belong to nodes of a range; k may be null.
void addElement(int element, const ElementMatrix* k, const ElementLoad& f, const NodeRange& range) {
  const auto nodes = wedgeNodesOf(element);
  std::array<int, 6> unknowns;
  for (std::size_t i = 0; i < 6; ++i) {
    unknowns[i] = unknownsOf(freedoms.nodeRestraint[nodes[i]]);
  }
  for (std::size_t a = 0; a < 6; ++a) {
    if (!range.holds(nodes[a % 3])) continue;
    const int firstRow = freedoms.nodeFirstRow[nodes[a]];
    for (int direction = 0; direction < unknowns[a]; ++direction) {
      const int row = firstRow + direction;
      const std::size_t local = 3 * a + static_cast<std::size_t>(direction);
      systemOfPass.rowLoad[row] += f[local];
      if (k == nullptr) continue;
      double* const target = systemOfPass.matrixValue.origin() + systemOfPass.rowStart[row];
      const double* source = k->data() + 18 * local;
      const int* offset = elementBlockOffset[element].data() + 6 * a;
      for (std::size_t b = 0; b < 6; ++b, source += 3) {
        double* const block = target + offset[b];
        if (unknowns[b] == 3) {
          for (int j = 0; j < 3; ++j) block[j] += source[j];
        } else {
          for (int j = 0; j < unknowns[b]; ++j) block[j] += source[j];
        }
      }
    }
  }
}

void addElementsOfNodes(const NodeRange& range, bool withMatrix, bool thermal) {
  const ElementTable& t = elementTable;
  ElementMatrix matrix;
  ElementLoad load;
  ElementMatrix* const k = withMatrix ? &matrix : nullptr;
  for (int element = 1; element <= t.partElementCount; ++element) {
    if (!range.holds(t.node1[element]) && !range.holds(t.node2[element]) && !range.holds(t.node3[element]))
      continue;
    formElement(element, thermal, k, load);
    addElement(element, k, load, range);
  }
}

void addAllElements(bool withMatrix, bool thermal) {
  const long layer = wedgeNumbering.wedgeNodeCount / 2;
#pragma omp parallel
  {
    const auto [thread, threads] = threadPlace();
    // Nodes are numbered in order of first use, so that a range is a
    // stretch of neighbouring elements as a rule.
    const NodeRange range{static_cast<int>(layer * thread / threads) + 1,
                          static_cast<int>(layer * (thread + 1) / threads)};
    addElementsOfNodes(range, withMatrix, thermal);
  }
}

/// Brings the diagonal of the node's second and third row to the front: the node's own columns, c1, c2, c3 at
/// first, become c2, c3, c1 and c3, c1, c2. In the two rows of a node with
/// two unknowns c3 is a neighbour's column.
template <class Value>
void diagonalFirst(Column<Value>& entries) {
  const int nodes = wedgeNumbering.wedgeNodeCount;
#pragma omp parallel for schedule(static)
  for (int n = 1; n <= nodes; ++n) {
    for (int shift = 1; shift < unknownsOf(freedoms.nodeRestraint[n]); ++shift) {
      const int row = freedoms.nodeFirstRow[n] + shift;
      Value* const begin = entries.origin() + systemOfPass.rowStart[row];
      const int width = systemOfPass.rowStart[row + 1] - systemOfPass.rowStart[row];
      std::rotate(begin, begin + shift, begin + std::min(width, 3));
    }
  }
}

/// Ends the run with the first element whose matrix or load isn't finite, when a row shows that there is one.
[[noreturn]] void failOnElement(bool thermal) {
  int culprit = 0;
  for (int e = 1; e <= elementTable.partElementCount && culprit == 0; ++e) {
    ElementMatrix k;
    ElementLoad f;
    formElement(e, thermal, &k, f);
    const auto bad = [](double value) { return !std::isfinite(value); };
    if (std::any_of(k.begin(), k.end(), bad) || std::any_of(f.begin(), f.end(), bad)) culprit = e;
  }
  const std::string fault = culprit > 0 ? wallModel().faultOf(wallElement(culprit, thermal)) : "";
  if (!fault.empty()) vFail("\n !! Error !!  Part element %d %s\n", culprit, fault.c_str());
  vFail(
      "\n !! Error !!  Stiffness or load of part element %d isn't a finite number: check its thickness "
      "and nodes in \"%s\", its stress in \"%s\", its temperatures and the moduli in \"%s\".\n",
      culprit, workingFiles.pg1.c_str(), workingFiles.rs1.c_str(), workingFiles.mal.c_str());
}

void checkFinite(bool withMatrix, bool thermal) {
  bool finite = true;
#pragma omp parallel for schedule(static) reduction(&& : finite)
  for (int row = 1; row <= freedoms.freeDofCount; ++row) {
    finite = finite && std::isfinite(systemOfPass.rowLoad[row]);
    if (!withMatrix) continue;
    // An entry that isn't finite makes the diagonals of its element's nodes so.
    finite = finite && std::isfinite(systemOfPass.matrixValue[systemOfPass.rowStart[row]]);
  }
  if (!finite) failOnElement(thermal);
}

void turnRow(int row) {
  for (int p = systemOfPass.rowStart[row]; p < systemOfPass.rowStart[row + 1]; ++p) {
    systemOfPass.matrixValue[p] *= -1.0;
  }
}

}  // namespace

void assemblePass(int stressPass, int passCount) {
  const bool thermal = stressPass == passCount;
  layOutRows();
  reportBadElements();
  addAllElements(true, thermal);
  diagonalFirst(systemOfPass.columnIndex);
  diagonalFirst(systemOfPass.matrixValue);
  checkFinite(true, thermal);
  turnedRows.clear();
  for (int row = 1; row <= freedoms.freeDofCount; ++row) {
    if (systemOfPass.matrixValue[systemOfPass.rowStart[row]] >= 0.0) continue;
    turnRow(row);
    systemOfPass.rowLoad[row] *= -1.0;
    turnedRows.push_back(row);
  }
}

void assembleLoad(int stressPass, int passCount) {
  const bool thermal = stressPass == passCount;
  systemOfPass.rowLoad.assign(freedoms.freeDofCount, 0.0);
  reportBadElements();
  addAllElements(false, thermal);
  checkFinite(false, thermal);
  for (int row : turnedRows) systemOfPass.rowLoad[row] *= -1.0;
}

}  // namespace keld
