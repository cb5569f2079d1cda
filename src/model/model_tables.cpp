// Storage of the structural model's tables; see the header for units, ranges and writers.
#include "model/model_tables.h"

namespace keld {

WedgeNumbering wedgeNumbering;
BoundaryNodes boundaryNodes;
FreedomTables freedoms;
RestraintFrame restraintFrame;
CompressedSystem systemOfPass;
VolumeTables volumes;
std::array<MaterialConstants, 3> materialConstants;
SolutionTables solution;

}  // namespace keld
