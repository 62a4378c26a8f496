/// The order in which the host has the nodes of a cell: corners first, then the inner nodes of each edge, of each face
/// (going around it from its first corner, then inwards) and of the cell, wedges and hexahedra layer by layer.
#pragma once

#include "loader/cells/nodePermutations.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace veltra::vtkcells {

/// Entry k is the place in the file's list of a cell's nodes of the one that is the cell's k-th in the host. Empty when
/// both orders agree.
using NodePlaces = std::span<const std::uint64_t>;

struct NodeOrder {
    std::uint8_t cellType; ///< the code in VTK's file formats
    NodePlaces places;
    NodePlaces oldPlaces = places; ///< before version 2.1 of the format
};

/// Before version 2.1 of the format the third and the fourth edge along z were the other way round.
template <std::size_t Count>
constexpr std::array<std::uint64_t, Count> oldHexahedron(std::array<std::uint64_t, Count> nodes,
                                                         std::ptrdiff_t nodesPerEdge) {
    const auto third = nodes.begin() + 8 + 6 * nodesPerEdge;
    std::swap_ranges(third, third + nodesPerEdge, third + nodesPerEdge);
    return nodes;
}
inline constexpr auto oldHexahedron27 = oldHexahedron(hexahedron27, 1);
inline constexpr auto oldHexahedron64 = oldHexahedron(hexahedron64, 2);
inline constexpr auto oldHexahedron125 = oldHexahedron(hexahedron125, 3);

inline constexpr auto nodeOrders = std::to_array<NodeOrder>({
    {8, pixelNodes},
    {11, voxelNodes},
    {32, wedge18}, // biquadratic
    {70, quadrilateral16},
    {70, quadrilateral25},
    {71, tetrahedron20},
    {71, tetrahedron35},
    {72, hexahedron27, oldHexahedron27},
    {72, hexahedron64, oldHexahedron64},
    {72, hexahedron125, oldHexahedron125},
    {73, wedge18},
    {73, wedge40},
    {73, wedge75},
});

/// The order of nodes in cells of this type with so many nodes. [any thread]
constexpr NodeOrder nodeOrder(std::uint8_t cellType, std::size_t nodeCount) {
    const auto found = std::find_if(nodeOrders.begin(), nodeOrders.end(), [&](const NodeOrder& row) {
        return row.cellType == cellType && row.places.size() == nodeCount;
    });
    return found == nodeOrders.end() ? NodeOrder{cellType, {}} : *found;
}

} // namespace veltra::vtkcells
