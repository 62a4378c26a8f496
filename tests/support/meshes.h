#pragma once

#include "tests/support/Mesh.h"

namespace test {

/// From 0 upwards.
std::vector<std::int64_t> numbers(std::size_t count);

/// One hexahedron in a unit cube, without arrays.
MeshPiece hexahedron();

/// One cell of an accepted type and an order that it comes in, with a nodal "u" (Float64).
MeshPiece singleCell(int type, int order = 1);

/// Several pieces' cells in one piece, side by side along x. Arrays are left out.
MeshPiece sideBySide(const std::vector<MeshPiece>& pieces);

/// A hexahedron, a wedge, a pyramid and a tetrahedron, with a nodal scalar, a nodal vector and cell-centred integers.
MeshPiece mixed();

} // namespace test
