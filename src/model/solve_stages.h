// Steps of a pass around its solution: from the reduced unknowns to displacements in global axes.
// Called by the analysis driver (declared in model_stage.h) once per pass.
#pragma once

#include "model/model_tables.h"

namespace keld {

/// displacement(freeDofList(k)) = rowSolution(k); all other freedoms get 0.
/// A value that isn't finite ends the run.
void scatterToFreedoms(const FreedomTables& freedom, const Column<double>& rowSolution,
                       Column<double>& displacement);

/// Turns the three values of each node with unknowns in a frame (restraint -2 and -3) to global axes.
void turnToGlobalAxes(const FreedomTables& freedom, const Column<RestraintFrame>& frames,
                      Column<double>& displacement);

/// Block of each reduced row, [1..freeDofCount], for the ordering of the direct solver: a node and its mate
/// across the wall have the same neighbours and share a block.
Column<int> rowBlocks(const FreedomTables& freedom, const Column<int>& nodeMate);

}  // namespace keld
