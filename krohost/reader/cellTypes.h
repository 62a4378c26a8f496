/// The cells that a zone can be made of.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace krohost::reader {

struct CellType {
    std::int64_t code;
    int dimension;
    std::array<std::int64_t, 4> nodeCounts; ///< of the orders that there are; 0: none
};

// clang-format off
inline constexpr std::array<CellType, 21> cellTypes{{
    { 1, 0, {1}},            // vertex
    { 3, 1, {2}},            // line
    { 5, 2, {3}},            // triangle
    { 8, 2, {4}},            // pixel
    { 9, 2, {4}},            // quad
    {10, 3, {4}},            // tetra
    {11, 3, {8}},            // voxel
    {12, 3, {8}},            // hexahedron
    {13, 3, {6}},            // wedge
    {14, 3, {5}},            // pyramid
    {21, 1, {3}},            // quadratic edge
    {22, 2, {6}},            // quadratic triangle
    {24, 3, {10}},           // quadratic tetra
    {28, 2, {9}},            // biquadratic quad
    {32, 3, {18}},           // biquadratic quadratic wedge
    {68, 1, {2, 3, 4, 5}},   // Lagrange curve
    {69, 2, {3, 6, 10, 15}}, // Lagrange triangle
    {70, 2, {4, 9, 16, 25}}, // Lagrange quadrilateral
    {71, 3, {4, 10, 20, 35}},
    {72, 3, {8, 27, 64, 125}},
    {73, 3, {6, 18, 40, 75}},
}};
// clang-format on

/// Null for a type that no zone can have.
constexpr const CellType* findCellType(std::int64_t code) {
    const auto* found =
        std::find_if(cellTypes.begin(), cellTypes.end(), [code](const CellType& type) { return type.code == code; });
    return found == cellTypes.end() ? nullptr : found;
}

} // namespace krohost::reader
