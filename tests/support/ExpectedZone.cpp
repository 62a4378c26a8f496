#include "tests/support/ExpectedZone.h"

#include "tests/support/encoding.h"

#include <zlib.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace test {

namespace {

template <class T>
std::string storedAs(const std::vector<std::int64_t>& values) {
    std::string bytes;
    for (std::int64_t value : values)
        bytes += valueBytes(static_cast<T>(value), false);
    return bytes;
}

int storageType(ElementType type) {
    constexpr std::array<int, 10> types{5, 5, 4, 4, 3, 3, 3, 3, 1, 2};
    return types[static_cast<std::size_t>(type)];
}

std::string variableName(const Array& array, std::size_t component) {
    if (array.componentCount == 1)
        return array.name;
    if (array.componentCount <= 3)
        return array.name + "_" + "XYZ"[component];
    return array.name + "_" + std::to_string(component + 1);
}

/// One component of an array, narrowed to what the host stores.
std::string componentBytes(const Array& array, std::size_t component) {
    return asElement(array.type, [&]<class T>(T) {
        const std::vector<T> values = valuesAs<T>(array);
        std::string bytes;
        for (std::size_t index = component; index < values.size();
             index += static_cast<std::size_t>(array.componentCount))
            if constexpr (std::is_integral_v<T> && sizeof(T) == 8)
                bytes += valueBytes(static_cast<std::int32_t>(values[index]), false);
            else
                bytes += valueBytes(values[index], false);
        return bytes;
    });
}

/// Adds the same array of every piece, one after the other.
void addVariables(ExpectedZone& zone, const std::vector<const Array*>& arrayOfPieces, const std::string& name,
                  bool nodal) {
    const auto components = static_cast<std::size_t>(arrayOfPieces.front()->componentCount);
    for (std::size_t component = 0; component < components; ++component) {
        ExpectedVariable variable;
        variable.name =
            name.empty() ? std::string(1, "XYZ"[component]) : variableName(*arrayOfPieces.front(), component);
        variable.nodal = nodal;
        variable.storageType = storageType(arrayOfPieces.front()->type);
        for (const Array* array : arrayOfPieces) {
            variable.bytes += componentBytes(*array, component);
            variable.valueCount += array->valueCount() / components;
        }
        variable.crc32 = crc32Of(variable.bytes);
        zone.variables.push_back(std::move(variable));
    }
}

const Array& named(const std::vector<Array>& arrays, const std::string& name) {
    const auto found = std::ranges::find(arrays, name, &Array::name);
    if (found == arrays.end())
        throw std::invalid_argument("a piece lacks " + name);
    return *found;
}

void addFieldVariables(ExpectedZone& zone, const std::vector<MeshPiece>& pieces, std::vector<Array> MeshPiece::*arrays,
                       bool nodal) {
    for (const Array& first : pieces.front().*arrays) {
        std::vector<const Array*> arrayOfPieces;
        for (const MeshPiece& piece : pieces)
            arrayOfPieces.push_back(&named(piece.*arrays, first.name));
        addVariables(zone, arrayOfPieces, first.name, nodal);
    }
}

struct Combination {
    int type;
    std::size_t nodes;
    bool operator==(const Combination&) const = default;
};

std::vector<Combination> combinations(const std::vector<MeshPiece>& pieces) {
    std::vector<Combination> found;
    for (const MeshPiece& piece : pieces)
        for (const Cell& cell : piece.cells)
            if (const Combination combination{cell.type, cell.nodes.size()};
                std::ranges::find(found, combination) == found.end())
                found.push_back(combination);
    if (found.empty())
        found.push_back({1, 1});
    return found;
}

int zoneType(const std::vector<Combination>& found) {
    constexpr std::array<std::pair<int, int>, 8> types{
        {{1, 0}, {3, 5}, {5, 1}, {8, 2}, {9, 2}, {10, 3}, {11, 4}, {12, 4}}};
    if (found.size() == 1)
        for (const auto& [cellType, type] : types)
            if (cellType == found.front().type)
                return type;
    return 8;
}

/// Vertices beside other cells become cells of the first other shape with the same node throughout.
ExpectedSection emptySection(const std::vector<Combination>& found, const Combination& combination) {
    ExpectedSection section;
    section.shape = cellKind(combination.type).shape;
    section.gridOrder = gridOrder(combination.type, combination.nodes);
    for (const Combination& other : found)
        if (section.shape == Shape::None)
            section.shape = cellKind(other.type).shape;
    section.nodesPerElement = nodeCount(section.shape, section.gridOrder);
    return section;
}

void addCell(ExpectedSection& section, const Cell& cell, std::int64_t shift, FileVersion version) {
    const std::vector<std::size_t> order = cell.type == 1 ? std::vector<std::size_t>(section.nodesPerElement, 0u)
                                                          : nodeOrder(cell.type, cell.nodes.size(), version);
    for (std::size_t place : order)
        section.nodes.push_back(cell.nodes[place] + shift);
    ++section.elementCount;
}

void addSections(ExpectedZone& zone, const std::vector<MeshPiece>& pieces, FileVersion version) {
    const std::vector<Combination> found = combinations(pieces);
    zone.zoneType = zoneType(found);
    if (zone.zoneType == 0)
        return;
    std::ranges::transform(found, std::back_inserter(zone.sections),
                           [&](const Combination& combination) { return emptySection(found, combination); });
    std::int64_t shift = 0;
    for (const MeshPiece& piece : pieces) {
        for (const Cell& cell : piece.cells) {
            const auto index = std::ranges::find(found, Combination{cell.type, cell.nodes.size()}) - found.begin();
            addCell(zone.sections[static_cast<std::size_t>(index)], cell, shift, version);
        }
        shift += static_cast<std::int64_t>(piece.pointCount());
    }
    for (ExpectedSection& section : zone.sections)
        section.crc32 = crc32Of(storedAs<std::int32_t>(section.nodes));
}

} // namespace

const ExpectedVariable& ExpectedZone::variable(const std::string& name) const {
    const auto found = std::ranges::find(variables, name, &ExpectedVariable::name);
    if (found == variables.end())
        throw std::out_of_range("no variable " + name);
    return *found;
}

ExpectedZone expectedZone(const std::vector<MeshPiece>& pieces, FileVersion version) {
    ExpectedZone zone;
    std::vector<const Array*> points;
    for (const MeshPiece& piece : pieces) {
        zone.nodeCount += piece.pointCount();
        zone.elementCount += piece.cells.size();
        points.push_back(&piece.points);
    }
    addVariables(zone, points, "", true);
    addFieldVariables(zone, pieces, &MeshPiece::pointData, true);
    addFieldVariables(zone, pieces, &MeshPiece::cellData, false);
    addSections(zone, pieces, version);
    if (zone.zoneType == 0)
        zone.elementCount = zone.nodeCount;
    return zone;
}

std::uint32_t crc32Of(const std::string& bytes) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

} // namespace test
