#include "tests/support/ExpectedZone.h"

#include "tests/support/encoding.h"

#include <algorithm>
#include <type_traits>

namespace test {

namespace {

constexpr std::array<int, 10> storageTypes{5, 5, 4, 4, 3, 3, 3, 3, 1, 2};

/// Coordinates come without a name of their own.
std::string variableName(const Array& array, std::size_t component) {
    const std::string letter(1, "XYZ"[component % 3]);
    if (array.name.empty())
        return letter;
    if (array.componentCount == 1)
        return array.name;
    return array.name + "_" + (array.componentCount <= 3 ? letter : std::to_string(component + 1));
}

/// One component of an array, narrowed to what the host stores.
std::string componentBytes(const Array& array, std::size_t component) {
    return asElement(array.type, [&]<class T>(T) {
        using Stored = std::conditional_t<std::is_integral_v<T> && sizeof(T) == 8, std::int32_t, T>;
        const std::vector<T> values = valuesAs<T>(array);
        const auto step = static_cast<std::size_t>(array.componentCount);
        std::string bytes;
        for (std::size_t index = component; index < values.size(); index += step)
            bytes += valueBytes(static_cast<Stored>(values[index]), false);
        return bytes;
    });
}

/// Adds every component of every array, one piece's values after the other's.
void addVariables(ExpectedZone& zone, const std::vector<std::vector<Array>>& arraysOfPieces, bool nodal) {
    for (std::size_t index = 0; index < arraysOfPieces.front().size(); ++index) {
        const Array& first = arraysOfPieces.front()[index];
        for (std::size_t component = 0; component < static_cast<std::size_t>(first.componentCount); ++component) {
            ExpectedVariable variable{variableName(first, component), nodal,
                                      storageTypes[static_cast<std::size_t>(first.type)], ""};
            for (const std::vector<Array>& arrays : arraysOfPieces)
                variable.bytes += componentBytes(arrays.at(index), component);
            zone.variables.push_back(variable);
        }
    }
}

using Kind = std::pair<int, std::size_t>; // cell type, nodes

Kind kindOf(const Cell& cell) {
    return {cell.type, cell.nodes.size()};
}

/// The kinds of cells in order of appearance; without cells, vertices.
std::vector<Kind> kindsOf(const std::vector<MeshPiece>& pieces) {
    std::vector<Kind> kinds;
    for (const MeshPiece& piece : pieces)
        for (const Cell& cell : piece.cells)
            if (std::ranges::find(kinds, kindOf(cell)) == kinds.end())
                kinds.push_back(kindOf(cell));
    return kinds.empty() ? std::vector{Kind{1, 1}} : kinds;
}

/// Vertices become cells of `shapeOfVertices` with the same node throughout.
ExpectedSection sectionOf(const std::vector<MeshPiece>& pieces, const Kind& kind, Shape shapeOfVertices,
                          FileVersion version) {
    const auto [type, nodes] = kind;
    ExpectedSection section{cellKind(type).shape, gridOrder(type, nodes), 0, {}};
    std::vector<std::size_t> order = nodeOrder(type, nodes, version);
    if (type == 1) {
        section.shape = shapeOfVertices;
        order.assign(nodeCount(shapeOfVertices, 1), 0);
    }
    std::int64_t firstNode = 0;
    for (const MeshPiece& piece : pieces) {
        for (const Cell& cell : piece.cells)
            if (kindOf(cell) == kind) {
                ++section.elementCount;
                for (std::size_t place : order)
                    section.nodes.push_back(cell.nodes[place] + firstNode);
            }
        firstNode += static_cast<std::int64_t>(piece.pointCount());
    }
    return section;
}

} // namespace

ExpectedZone expectedZone(const std::vector<MeshPiece>& pieces, FileVersion version) {
    ExpectedZone zone;
    std::vector<std::vector<Array>> points, pointData, cellData;
    for (const MeshPiece& piece : pieces) {
        zone.nodeCount += piece.pointCount();
        zone.elementCount += piece.cells.size();
        points.push_back({piece.points});
        points.back()[0].name.clear();
        pointData.push_back(piece.pointData);
        cellData.push_back(piece.cellData);
    }
    addVariables(zone, points, true);
    addVariables(zone, pointData, true);
    addVariables(zone, cellData, false);

    const std::vector<Kind> kinds = kindsOf(pieces);
    zone.zoneType = kinds.size() == 1 ? cellKind(kinds[0].first).zoneType : 8;
    if (zone.zoneType == 0) {
        zone.elementCount = zone.nodeCount;
        return zone;
    }
    const auto other = std::ranges::find_if(kinds, [](const Kind& kind) { return kind.first != 1; });
    for (const Kind& kind : kinds)
        zone.sections.push_back(sectionOf(pieces, kind, cellKind(other->first).shape, version));
    return zone;
}

} // namespace test
