// Order of the steps of shell model processing.
#include "model/skin/shell_processing.h"

#include <array>
#include <cmath>
#include <utility>

#include "input/mesh_access.h"
#include "model/skin/pairing_table.h"
#include "model/skin/scratch_file.h"
#include "model/skin/shell_connectors.h"
#include "model/skin/shell_neighbours.h"
#include "model/skin/shell_thickness.h"
#include "run/base/failure.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

void clearShellTables() {
  const int elements = elementTable.elementCount, nodes = nodeTable.nodeCount;
  shell = {};
  shell.runningCount = elementTable.elementCount;
  shell.elementPartner.assign(elements, 0);
  shell.elementSplitFlag.assign(elements, 0);
  shell.elementKind.assign(elements, 1);
  shell.thicknessClass.assign(nodes, 0);
  shell.featureNode.assign(nodes, 0);
  shell.connectorUse.assign(nodes, 0);
}

namespace {

/// From pairs and raw thickness to repaired thickness and connector rows.
void modelProcessingSequence() {
  vPrintMessage(1, "    Model Processing 1 ....\n");
  obtainPairingTable();
  const IncidenceLists trianglesAtNode = elementsAtNodes(false);
  const IncidenceLists neighbours = edgeNeighbours(trianglesAtNode);

  vPrintMessage(1, "    Model Processing 2 ....\n");
  fillThicknessGaps(neighbours);
  shell.characteristicThickness = characteristicThicknessOf(geometry.smallestExtent);
  repairThickElements();
  removeThicknessSpikes(neighbours);
  limitThickness(neighbours);

  vPrintMessage(1, "    Model Processing 3 ....\n");
  cleanUpPartners();

  vPrintMessage(1, "    Model Processing 4 ....\n");
  markFeatureNodes(trianglesAtNode);
  makeConnectors(trianglesAtNode);
  vPrintMessage(1, "    Model Processing Complete \n");
}

/// The upper limit first, so that the least wall wins on a part thinner than it.
void clampThickness() {
  constexpr double leastWall = 0.025;  // cm
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    if (!isTriangle(e)) continue;
    double& t = elementTable.thickness[e];
    if (t >= geometry.smallestExtent) t = geometry.smallestExtent;
    if (t <= leastWall) t = leastWall;
  }
}

/// Applies the ninth field of the geometry records.
void correctThickness() {
  for (int e = 1; e <= elementTable.elementCount; ++e) {
    const double base =
        geometry.thicknessCorrection == 1 ? elementTable.correctedThickness[e] : elementTable.thickness[e];
    const double scale = elementTable.thicknessScale[e];
    if (!std::isfinite(scale)) {
      vFail(
          "\n !! Error !!  The ninth field of element %d in \"%s\", the divisor of the thickness correction, "
          "is 0: "
          "a number other than 0 was expected, or no ninth field.\n",
          e, workingFiles.pg1.c_str());
    }
    elementTable.thickness[e] = base * scale;
  }
}

void fullProcessing() {
  vPrintMessage(1, "\n # Shell model processing ......\n");
  modelProcessingSequence();
  clampThickness();
  correctThickness();
  filterConnectors();
  writeScratchFile();
}

/// No triangle is left thinner than a tenth of the mean.
void raiseThinElements() {
  double sum = 0.0;
  int count = 0;
  const auto takesPart = [](int e) { return isTriangle(e) && shell.elementKind[e] > -1; };
  for (int e = 1; e <= elementTable.elementCount; ++e)
    if (takesPart(e)) {
      sum += elementTable.thickness[e];
      ++count;
    }
  if (count == 0) return;
  const double mean = sum / count;
  for (int e = 1; e <= elementTable.elementCount; ++e)
    if (takesPart(e) && elementTable.thickness[e] / mean < 0.1) elementTable.thickness[e] = 0.1 * mean;
}

}  // namespace

void shellProcessing() {
  const int rows = elementTable.node1.rows();
  const std::array nodesOfFile{elementTable.node1, elementTable.node2, elementTable.node3};
  clearShellTables();
  if (readScratchFile()) {
    vPrintMessage(1, "\n # Shell model processing has been done ......\n\n");
    vPrintMessage(
        1,
        "\n !! Warning !!  The processed model of a former run was taken over from \"%s\", and its "
        "thicknesses are corrected a second time: remove the file to have the model processed anew.\n",
        workingFiles.baseName.c_str());
    correctThickness();
  } else {
    fullProcessing();
  }
  raiseThinElements();

  // The finite-element model is made of the file's own elements: connector rows go.
  elementTable.node1 = nodesOfFile[0];
  elementTable.node2 = nodesOfFile[1];
  elementTable.node3 = nodesOfFile[2];
  elementTable.thickness.resize(rows);
  elementTable.area.resize(rows);
  // The tables of this stage alone; pairs and characteristic thickness stay.
  shell.elementKind = {};
  shell.featureNode = {};
  elementTable.meanEdge = {};
  elementTable.cornerCosine = {};
}

void translatePartners(const Column<int>& compact) {
  Column<int> translated(shell.elementPartner.rows(), 0);
  for (int e = 1; e <= translated.rows(); ++e) {
    const int partner = shell.elementPartner[e];
    if (compact[e] > 0 && partner > 0) translated[compact[e]] = compact[partner];
  }
  std::swap(shell.elementPartner, translated);
}

}  // namespace keld
