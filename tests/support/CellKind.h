#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace test {

/// The host's shapes of cells, by the numbers that it is given.
enum class Shape : int { Line, Triangle, Quadrilateral, Tetrahedron, Hexahedron, Pyramid, Prism, None = 255 };

/// A cell type that is accepted, with the orders it comes in.
struct CellKind {
    int type;
    Shape shape;
    int dimension;
    int lowestOrder;
    int highestOrder;
    int zoneType; // of a zone of such cells alone
};

inline constexpr std::array<CellKind, 21> acceptedCells{{
    {1, Shape::None, 0, 1, 1, 0},          {3, Shape::Line, 1, 1, 1, 5},
    {5, Shape::Triangle, 2, 1, 1, 1},      {8, Shape::Quadrilateral, 2, 1, 1, 2},
    {9, Shape::Quadrilateral, 2, 1, 1, 2}, {10, Shape::Tetrahedron, 3, 1, 1, 3},
    {11, Shape::Hexahedron, 3, 1, 1, 4},   {12, Shape::Hexahedron, 3, 1, 1, 4},
    {13, Shape::Prism, 3, 1, 1, 8},        {14, Shape::Pyramid, 3, 1, 1, 8},
    {21, Shape::Line, 1, 2, 2, 8},         {22, Shape::Triangle, 2, 2, 2, 8},
    {24, Shape::Tetrahedron, 3, 2, 2, 8},  {28, Shape::Quadrilateral, 2, 2, 2, 8},
    {32, Shape::Prism, 3, 2, 2, 8},        {68, Shape::Line, 1, 1, 4, 8},
    {69, Shape::Triangle, 2, 1, 4, 8},     {70, Shape::Quadrilateral, 2, 1, 4, 8},
    {71, Shape::Tetrahedron, 3, 1, 4, 8},  {72, Shape::Hexahedron, 3, 1, 4, 8},
    {73, Shape::Prism, 3, 1, 4, 8},
}};

/// Throws std::out_of_range for a type that is not accepted.
const CellKind& cellKind(int type);

/// Nodes of a cell of this shape and order, from the number of lattice points in it.
std::size_t nodeCount(Shape shape, int order);

/// The order at which a cell of the type has so many nodes. Throws std::out_of_range when there is none.
int gridOrder(int type, std::size_t nodes);

/// Version of the file format: major, minor.
using FileVersion = std::pair<int, int>;

/// For each of the host's nodes of a cell, its place in the file's list.
std::vector<std::size_t> nodeOrder(int type, std::size_t nodes, FileVersion version);

/// Coordinates of the nodes of a cell in the file's order, three per node, lattice points of a unit cell.
std::vector<double> cellPoints(int type, int order);

} // namespace test
