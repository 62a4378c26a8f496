/// The catalogue of cells: what VTK's file formats call them, and those that there are in the host.
#pragma once

#include "interface/kro.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace veltra::vtkcells {

/// The values are the file formats' own codes; any byte of a file can become one, also of a type that is not here.
enum class Type : std::uint8_t {
    Vertex = 1,
    Line = 3,
    Triangle = 5,
    Pixel = 8,
    Quad = 9,
    Tetra = 10,
    Voxel = 11,
    Hexahedron = 12,
    Wedge = 13,
    Pyramid = 14,
    QuadraticEdge = 21,
    QuadraticTriangle = 22,
    QuadraticTetra = 24,
    BiQuadraticQuad = 28,
    BiQuadraticQuadraticWedge = 32,
    LagrangeCurve = 68,
    LagrangeTriangle = 69,
    LagrangeQuadrilateral = 70,
    LagrangeTetrahedron = 71,
    LagrangeHexahedron = 72,
    LagrangeWedge = 73
};

/// A type that the host can have.
struct CellType {
    Type type;
    std::uint32_t dimension;
    CellShape_e shape;
    ZoneType_e zoneType;                     ///< of a zone with such cells alone
    std::array<std::uint32_t, 4> nodeCounts; ///< of orders 1 to 4; 0: there is no such order

    constexpr std::uint8_t code() const { return static_cast<std::uint8_t>(type); }

    /// The order of a cell with so many nodes, from 1; 0 when there is none.
    constexpr std::uint32_t order(std::int64_t nodeCount) const {
        for (std::uint32_t place = 0; place < nodeCounts.size(); ++place)
            if (nodeCount > 0 && nodeCounts[place] == nodeCount)
                return place + 1;
        return 0;
    }
};

// clang-format off
inline constexpr std::array<CellType, 21> cellTypes{{
    {Type::Vertex,                    0, CellShape_None,          ZoneType_Ordered,       {  1,   0,   0,   0}},
    {Type::Line,                      1, CellShape_Line,          ZoneType_LineSegment,   {  2,   0,   0,   0}},
    {Type::Triangle,                  2, CellShape_Triangle,      ZoneType_Triangle,      {  3,   0,   0,   0}},
    {Type::Pixel,                     2, CellShape_Quadrilateral, ZoneType_Quadrilateral, {  4,   0,   0,   0}},
    {Type::Quad,                      2, CellShape_Quadrilateral, ZoneType_Quadrilateral, {  4,   0,   0,   0}},
    {Type::Tetra,                     3, CellShape_Tetrahedron,   ZoneType_Tetrahedron,   {  4,   0,   0,   0}},
    {Type::Voxel,                     3, CellShape_Hexahedron,    ZoneType_Brick,         {  8,   0,   0,   0}},
    {Type::Hexahedron,                3, CellShape_Hexahedron,    ZoneType_Brick,         {  8,   0,   0,   0}},
    {Type::Wedge,                     3, CellShape_Prism,         ZoneType_Mixed,         {  6,   0,   0,   0}},
    {Type::Pyramid,                   3, CellShape_Pyramid,       ZoneType_Mixed,         {  5,   0,   0,   0}},
    {Type::QuadraticEdge,             1, CellShape_Line,          ZoneType_Mixed,         {  0,   3,   0,   0}},
    {Type::QuadraticTriangle,         2, CellShape_Triangle,      ZoneType_Mixed,         {  0,   6,   0,   0}},
    {Type::QuadraticTetra,            3, CellShape_Tetrahedron,   ZoneType_Mixed,         {  0,  10,   0,   0}},
    {Type::BiQuadraticQuad,           2, CellShape_Quadrilateral, ZoneType_Mixed,         {  0,   9,   0,   0}},
    {Type::BiQuadraticQuadraticWedge, 3, CellShape_Prism,         ZoneType_Mixed,         {  0,  18,   0,   0}},
    {Type::LagrangeCurve,             1, CellShape_Line,          ZoneType_Mixed,         {  2,   3,   4,   5}},
    {Type::LagrangeTriangle,          2, CellShape_Triangle,      ZoneType_Mixed,         {  3,   6,  10,  15}},
    {Type::LagrangeQuadrilateral,     2, CellShape_Quadrilateral, ZoneType_Mixed,         {  4,   9,  16,  25}},
    {Type::LagrangeTetrahedron,       3, CellShape_Tetrahedron,   ZoneType_Mixed,         {  4,  10,  20,  35}},
    {Type::LagrangeHexahedron,        3, CellShape_Hexahedron,    ZoneType_Mixed,         {  8,  27,  64, 125}},
    {Type::LagrangeWedge,             3, CellShape_Prism,         ZoneType_Mixed,         {  6,  18,  40,  75}},
}};
// clang-format on

struct TypeName {
    std::uint8_t code;
    std::string_view name;
};

/// Of all types that the file formats define.
inline constexpr auto typeNames = std::to_array<TypeName>({
    {0, "Empty Cell"},
    {1, "Vertex"},
    {2, "Poly Vertex"},
    {3, "Line"},
    {4, "Poly Line"},
    {5, "Triangle"},
    {6, "Triangle Strip"},
    {7, "Polygon"},
    {8, "Pixel"},
    {9, "Quad"},
    {10, "Tetra"},
    {11, "Voxel"},
    {12, "Hexahedron"},
    {13, "Wedge"},
    {14, "Pyramid"},
    {15, "Pentagonal Prism"},
    {16, "Hexagonal Prism"},
    {21, "Quadratic Edge"},
    {22, "Quadratic Triangle"},
    {23, "Quadratic Quad"},
    {24, "Quadratic Tetra"},
    {25, "Quadratic Hexahedron"},
    {26, "Quadratic Wedge"},
    {27, "Quadratic Pyramid"},
    {28, "Bi-Quadratic Quad"},
    {29, "Tri-Quadratic Hexahedron"},
    {30, "Quadratic Linear Quad"},
    {31, "Quadratic Linear Wedge"},
    {32, "Bi-Quadratic Quadratic Wedge"},
    {33, "Bi-Quadratic Quadratic Hexahedron"},
    {34, "Bi-Quadratic Triangle"},
    {35, "Cubic Line"},
    {36, "Quadratic Polygon"},
    {41, "Convex Point Set"},
    {42, "Polyhedron"},
    {51, "Parametric Curve"},
    {52, "Parametric Surface"},
    {53, "Parametric Tri Surface"},
    {54, "Parametric Quad Surface"},
    {55, "Parametric Tetra Region"},
    {56, "Parametric Hex Region"},
    {60, "Higher Order Edge"},
    {61, "Higher Order Triangle"},
    {62, "Higher Order Quad"},
    {63, "Higher Order Polygon"},
    {64, "Higher Order Tetrahedron"},
    {65, "Higher Order Wedge"},
    {66, "Higher Order Pyramid"},
    {67, "Higher Order Hexahedron"},
    {68, "Lagrange Curve"},
    {69, "Lagrange Triangle"},
    {70, "Lagrange Quadrilateral"},
    {71, "Lagrange Tetrahedron"},
    {72, "Lagrange Hexahedron"},
    {73, "Lagrange Wedge"},
    {74, "Lagrange Pyramid"},
    {75, "Bezier Curve"},
    {76, "Bezier Triangle"},
    {77, "Bezier Quadrilateral"},
    {78, "Bezier Tetrahedron"},
    {79, "Bezier Hexahedron"},
    {80, "Bezier Wedge"},
    {81, "Bezier Pyramid"},
});

/// Whether codes rise from row to row, so that no type has two rows.
template <class Rows, class Code>
constexpr bool areSorted(const Rows& rows, Code code) {
    return std::adjacent_find(rows.begin(), rows.end(),
                              [&](const auto& row, const auto& next) { return code(row) >= code(next); }) == rows.end();
}
static_assert(areSorted(cellTypes, [](const CellType& row) { return row.code(); }));
static_assert(areSorted(typeNames, [](const TypeName& row) { return row.code; }));

inline constexpr std::array<const CellType*, 256> rowsByCode = [] {
    std::array<const CellType*, 256> rows{};
    for (const CellType& row : cellTypes)
        rows[row.code()] = &row;
    return rows;
}();

/// Null for a type that the host does not have. [any thread]
constexpr const CellType* findCellType(std::int64_t code) {
    return code >= 0 && code < 256 ? rowsByCode[static_cast<std::size_t>(code)] : nullptr;
}

/// "Unknown" for a code that the file formats do not define. [any thread]
constexpr std::string_view typeName(std::uint8_t code) {
    const auto found =
        std::find_if(typeNames.begin(), typeNames.end(), [code](const TypeName& row) { return row.code == code; });
    return found == typeNames.end() ? "Unknown" : found->name;
}

/// From 0; that of the host's shapes without a cell type is 0 too.
constexpr int dimension(CellShape_e shape) {
    const auto found =
        std::find_if(cellTypes.begin(), cellTypes.end(), [shape](const CellType& row) { return row.shape == shape; });
    return found == cellTypes.end() ? 0 : static_cast<int>(found->dimension);
}

} // namespace veltra::vtkcells
