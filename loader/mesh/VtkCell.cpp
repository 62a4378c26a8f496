#include "loader/mesh/VtkCell.h"

#include "loader/mesh/cellTables.h"
#include "loader/mesh/messages.h"

#include "loader/cells/nodeOrder.h"
#include "loader/sdk/exceptions.h"

#include <algorithm>
#include <utility>

namespace veltra::vtkfile::VtkCell {

namespace {

/// From a type code to the catalogue's row, or null.
constexpr std::array<const AcceptedType*, 256> rowsByCode = [] {
    std::array<const AcceptedType*, 256> rows{};
    for (const AcceptedType& row : acceptedTypes)
        rows[static_cast<std::uint8_t>(row.type)] = &row;
    return rows;
}();

const AcceptedType* findRow(Type type) {
    return rowsByCode[static_cast<std::uint8_t>(type)];
}

constexpr FileVersion newHexahedronOrder{2, 1, 0};

} // namespace

std::string_view typeName(Type type) {
    const auto code = static_cast<std::uint8_t>(type);
    return code < typeNames.size() ? typeNames[code] : "Unknown";
}

void classify(Type type, std::uint32_t& runningDimension) {
    const AcceptedType* row = findRow(type);
    if (!row)
        throw IOException(unsupportedCellType(typeName(type)));
    if (type == Type::Vertex)
        return;
    const std::uint32_t previous = std::exchange(runningDimension, row->dimension);
    if (previous != noDimension && previous != row->dimension)
        throw IOException(mixedDimensions(typeName(type), row->dimension, previous));
}

void checkNodeCount(Type type, std::int64_t nodeCount) {
    const auto& counts = findRow(type)->nodeCounts;
    if (std::none_of(counts.begin(), counts.end(),
                     [&](std::uint32_t count) { return count != none && count == nodeCount; }))
        throw IOException(unsupportedNodeCount(typeName(type), nodeCount));
}

std::uint32_t gridOrder(Type type, std::uint32_t nodeCount) {
    const auto& counts = findRow(type)->nodeCounts;
    return static_cast<std::uint32_t>(std::find(counts.begin(), counts.end(), nodeCount) - counts.begin()) + 1;
}

CellShape_e hostShape(Type type) {
    return findRow(type)->shape;
}

std::span<const std::uint64_t> nodePermutation(FileVersion version, Type type, std::uint32_t nodeCount) {
    const vtkcells::NodeOrder order = vtkcells::nodeOrder(static_cast<std::uint8_t>(type), nodeCount);
    return version < newHexahedronOrder ? order.oldPlaces : order.places;
}

} // namespace veltra::vtkfile::VtkCell
