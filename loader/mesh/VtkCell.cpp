#include "loader/mesh/VtkCell.h"

#include "loader/mesh/messages.h"

#include "loader/cells/nodeOrder.h"
#include "loader/sdk/exceptions.h"

#include <string_view>
#include <utility>

namespace veltra::vtkfile::VtkCell {

namespace {

std::uint8_t code(Type type) {
    return static_cast<std::uint8_t>(type);
}

const vtkcells::CellType* findRow(Type type) {
    return vtkcells::findCellType(code(type));
}

std::string_view typeName(Type type) {
    return vtkcells::typeName(code(type));
}

constexpr FileVersion newHexahedronOrder{2, 1, 0};

} // namespace

void classify(Type type, std::uint32_t& runningDimension) {
    const vtkcells::CellType* row = findRow(type);
    if (!row)
        throw IOException(unsupportedCellType(typeName(type)));
    if (type == Type::Vertex)
        return;
    const std::uint32_t previous = std::exchange(runningDimension, row->dimension);
    if (previous != noDimension && previous != row->dimension)
        throw IOException(mixedDimensions(typeName(type), row->dimension, previous));
}

void checkNodeCount(Type type, std::int64_t nodeCount) {
    if (findRow(type)->order(nodeCount) == 0)
        throw IOException(unsupportedNodeCount(typeName(type), nodeCount));
}

std::uint32_t gridOrder(Type type, std::uint32_t nodeCount) {
    return findRow(type)->order(nodeCount);
}

CellShape_e hostShape(Type type) {
    return findRow(type)->shape;
}

ZoneType_e zoneType(Type type) {
    return findRow(type)->zoneType;
}

std::span<const std::uint64_t> nodePermutation(FileVersion version, Type type, std::uint32_t nodeCount) {
    const vtkcells::NodeOrder order = vtkcells::nodeOrder(code(type), nodeCount);
    return version < newHexahedronOrder ? order.oldPlaces : order.places;
}

} // namespace veltra::vtkfile::VtkCell
