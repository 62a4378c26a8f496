/// The catalogue's data: names of all cell types, properties of the accepted ones.
#pragma once

#include "loader/mesh/VtkCell.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

namespace veltra::vtkfile::VtkCell {

/// By type code.
inline constexpr std::array<std::string_view, 82> typeNames{
    "Empty Cell",
    "Vertex",
    "Poly Vertex",
    "Line",
    "Poly Line",
    "Triangle",
    "Triangle Strip",
    "Polygon",
    "Pixel",
    "Quad",
    "Tetra", // 10
    "Voxel",
    "Hexahedron",
    "Wedge",
    "Pyramid",
    "Pentagonal Prism",
    "Hexagonal Prism",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown", // 20
    "Quadratic Edge",
    "Quadratic Triangle",
    "Quadratic Quad",
    "Quadratic Tetra",
    "Quadratic Hexahedron",
    "Quadratic Wedge",
    "Quadratic Pyramid",
    "Bi-Quadratic Quad",
    "Tri-Quadratic Hexahedron",
    "Quadratic Linear Quad", // 30
    "Quadratic Linear Wedge",
    "Bi-Quadratic Quadratic Wedge",
    "Bi-Quadratic Quadratic Hexahedron",
    "Bi-Quadratic Triangle",
    "Cubic Line",
    "Quadratic Polygon",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown", // 40
    "Convex Point Set",
    "Polyhedron",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown",
    "Unknown", // 50
    "Parametric Curve",
    "Parametric Surface",
    "Parametric Tri Surface",
    "Parametric Quad Surface",
    "Parametric Tetra Region",
    "Parametric Hex Region",
    "Unknown",
    "Unknown",
    "Unknown",
    "Higher Order Edge", // 60
    "Higher Order Triangle",
    "Higher Order Quad",
    "Higher Order Polygon",
    "Higher Order Tetrahedron",
    "Higher Order Wedge",
    "Higher Order Pyramid",
    "Higher Order Hexahedron",
    "Lagrange Curve",
    "Lagrange Triangle",
    "Lagrange Quadrilateral", // 70
    "Lagrange Tetrahedron",
    "Lagrange Hexahedron",
    "Lagrange Wedge",
    "Lagrange Pyramid",
    "Bezier Curve",
    "Bezier Triangle",
    "Bezier Quadrilateral",
    "Bezier Tetrahedron",
    "Bezier Hexahedron",
    "Bezier Wedge", // 80
    "Bezier Pyramid",
};

/// An order that the type does not have; no cell has so many nodes.
inline constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

struct AcceptedType {
    Type type;
    std::uint32_t dimension;
    CellShape_e shape;
    std::array<std::uint32_t, 4> nodeCounts; ///< of orders 1 to 4
};

// clang-format off
inline constexpr std::array<AcceptedType, 21> acceptedTypes{{
    {Type::Vertex,                    0, CellShape_None,          {1,    none, none, none}},
    {Type::Line,                      1, CellShape_Line,          {2,    none, none, none}},
    {Type::Triangle,                  2, CellShape_Triangle,      {3,    none, none, none}},
    {Type::Pixel,                     2, CellShape_Quadrilateral, {4,    none, none, none}},
    {Type::Quad,                      2, CellShape_Quadrilateral, {4,    none, none, none}},
    {Type::Tetra,                     3, CellShape_Tetrahedron,   {4,    none, none, none}},
    {Type::Voxel,                     3, CellShape_Hexahedron,    {8,    none, none, none}},
    {Type::Hexahedron,                3, CellShape_Hexahedron,    {8,    none, none, none}},
    {Type::Wedge,                     3, CellShape_Prism,         {6,    none, none, none}},
    {Type::Pyramid,                   3, CellShape_Pyramid,       {5,    none, none, none}},
    {Type::QuadraticEdge,             1, CellShape_Line,          {none, 3,    none, none}},
    {Type::QuadraticTriangle,         2, CellShape_Triangle,      {none, 6,    none, none}},
    {Type::QuadraticTetra,            3, CellShape_Tetrahedron,   {none, 10,   none, none}},
    {Type::BiQuadraticQuad,           2, CellShape_Quadrilateral, {none, 9,    none, none}},
    {Type::BiQuadraticQuadraticWedge, 3, CellShape_Prism,         {none, 18,   none, none}},
    {Type::LagrangeCurve,             1, CellShape_Line,          {2,    3,    4,    5   }},
    {Type::LagrangeTriangle,          2, CellShape_Triangle,      {3,    6,    10,   15  }},
    {Type::LagrangeQuadrilateral,     2, CellShape_Quadrilateral, {4,    9,    16,   25  }},
    {Type::LagrangeTetrahedron,       3, CellShape_Tetrahedron,   {4,    10,   20,   35  }},
    {Type::LagrangeHexahedron,        3, CellShape_Hexahedron,    {8,    27,   64,   125 }},
    {Type::LagrangeWedge,             3, CellShape_Prism,         {6,    18,   40,   75  }},
}};
// clang-format on

static_assert(std::is_sorted(acceptedTypes.begin(), acceptedTypes.end(),
                             [](const AcceptedType& left, const AcceptedType& right) {
                                 return left.type < right.type;
                             }));

} // namespace veltra::vtkfile::VtkCell
