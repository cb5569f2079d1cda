// Storage of the structural model's tables; see the header for units, ranges and writers.
#include "model/model_tables.h"

namespace keld {

WedgeNumbering wedgeNumbering;
std::vector<BoundaryNodes> boundaryNodes;
FreedomTables freedoms;
std::vector<RestraintFrame> restraintFrames;
CompressedSystem systemOfPass;
VolumeTables volumes;
std::array<MaterialConstants, 3> materialConstants;
SolutionTables solution;

}  // namespace keld
