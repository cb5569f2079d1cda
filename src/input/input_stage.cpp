// The input stage: the readers of a job in their fixed order.
// Called once by the entry point.
#include "input/input_stage.h"

#include <algorithm>
#include <string>

#include "input/boundary_file.h"
#include "input/geometry_file.h"
#include "input/geometry_statistics.h"
#include "input/mesh_tables.h"
#include "input/needle_triangles.h"
#include "input/polymer_file.h"
#include "input/prior_results.h"
#include "input/process_file.h"
#include "input/process_record.h"
#include "input/solver_settings.h"
#include "run/base/failure.h"
#include "run/base/working_files.h"

namespace keld {
namespace {

/// The numbers can be tested once the nodes are counted. Any 0 leaves the choice of all three to the system.
void checkBoundaryNodes(const std::string& source) {
  const auto& node = processRecord.bcNode;
  if (std::find(node.begin() + 1, node.end(), 0) != node.end()) return;
  for (std::size_t i = 1; i <= 3; ++i)
    if (node[i] < 1 || node[i] > nodeTable.nodeCount)
      vFail("\n !! Error !!  %s: boundary node %zu is %d, expected a node number from 1 to %d, or 0\n",
            source.c_str(), i, node[i], nodeTable.nodeCount);
}

}  // namespace

void inputStage() {
  preReadGeometry();
  checkWorkingFiles();
  readProcessFile();
  readPolymerFile();
  const std::string settings = readSolverSettings();
  const bool fixed = readBoundaryFile();
  readGeometry();
  partCentreAndAxes();
  checkGeometry();
  checkBoundaryNodes(fixed ? workingFiles.bc1 : settings);
  echoGeometry();
  warnOfNeedles();
}

}  // namespace keld
