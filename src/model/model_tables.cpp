// Storage of the structural model's tables; see the header for units, ranges and writers.
#include "model/model_tables.h"

namespace keld {

WedgeNumbering wedgeNumbering;
Column<BoundaryNodes> boundaryNodes;
FreedomTables freedoms;
Column<RestraintFrame> restraintFrames;
CompressedSystem systemOfPass;
VolumeTables volumes;
FixedColumn<MaterialConstants, 2> materialConstants;
SolutionTables solution;

}  // namespace keld
