#pragma once

#include "tests/support/Mesh.h"

namespace test {

/// One hexahedron in a unit cube, without arrays.
MeshPiece hexahedron();

/// A box of n by n by n hexahedra with a nodal "pressure" (Float32) and a cell-centred "cellNumber" (Int32).
MeshPiece hexahedronBox(int n);

/// One cell of an accepted type and an order that it comes in, with a nodal "u" (Float64).
MeshPiece singleCell(int type, int order = 1);

/// Several pieces' cells in one piece, side by side along x. Arrays are left out.
MeshPiece sideBySide(const std::vector<MeshPiece>& pieces);

/// A hexahedron, a wedge, a pyramid and a tetrahedron, with a nodal scalar, a nodal vector and cell-centred integers.
MeshPiece mixed();

/// Half a wing, the root at z = 0, its cells conforming: hexahedra between wedges at both edges, and a tip of pyramids
/// and tetrahedra. `chordCells` (at least 3), `thicknessCells` and `spanCells` count cells along the three directions.
/// Nodal "pressure" (Float32), "temperature" (Float64), "velocity" (Float32, three components), "boundary" (UInt8);
/// cell-centred "cellNumber" (Int32), "layer" (Int16), "heat" (Float64).
MeshPiece wing(int chordCells, int thicknessCells, int spanCells);

} // namespace test
