#pragma once

#include "tests/support/Mesh.h"

namespace test {

/// Half a wing, the root at z = 0, its cells conforming: hexahedra between wedges at both edges, and a tip of pyramids
/// and tetrahedra. `chordCells` (at least 3), `thicknessCells` and `spanCells` count cells along the three directions.
/// Nodal "pressure" (Float32), "temperature" (Float64), "velocity" (Float32, three components), "boundary" (UInt8);
/// cell-centred "cellNumber" (Int32), "layer" (Int16), "heat" (Float64).
MeshPiece wing(int chordCells, int thicknessCells, int spanCells);

} // namespace test
