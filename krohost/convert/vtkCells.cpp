#include "krohost/convert/vtkCells.h"

#include "krohost/convert/Loaded.h"
#include "krohost/convert/WriteError.h"
#include "loader/cells/cellTypes.h"
#include "loader/cells/nodeOrder.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numeric>

namespace krohost::convert {

namespace {

using veltra::vtkcells::CellType;
using veltra::vtkcells::Type;

/// Of several types for one shape and order, the usual one comes first.
constexpr std::array<CellType, veltra::vtkcells::cellTypes.size()> usualTypes = [] {
    auto types = veltra::vtkcells::cellTypes;
    const auto isUsual = [](const CellType& row) { return row.type != Type::Pixel && row.type != Type::Voxel; };
    const auto usual = veltra::vtkcells::cellTypes;
    auto end = std::copy_if(usual.begin(), usual.end(), types.begin(), isUsual);
    std::copy_if(usual.begin(), usual.end(), end, [&](const CellType& row) { return !isUsual(row); });
    return types;
}();

bool isTypeOf(const Section& section, const CellType& row) {
    const auto order = static_cast<std::size_t>(section.gridOrder);
    return row.shape == section.shape && order >= 1 && order <= row.nodeCounts.size() && row.nodeCounts[order - 1] > 0;
}

/// The host's places of the nodes of a cell, in the order of the file.
std::vector<std::uint8_t> nodesInFile(std::uint8_t type, std::uint32_t nodeCount) {
    std::vector<std::uint8_t> nodes(nodeCount);
    std::iota(nodes.begin(), nodes.end(), std::uint8_t{0});
    const auto places = veltra::vtkcells::nodeOrder(type, nodeCount).places;
    for (std::size_t inHost = 0; inHost < places.size(); ++inHost)
        nodes[places[inHost]] = static_cast<std::uint8_t>(inHost);
    return nodes;
}

bool hasOneNodePerCell(const SectionNodes& nodes, std::size_t nodesPerCell) {
    for (std::size_t index = 0; index < nodes.size(); ++index)
        if (nodes[index] != nodes[index - index % nodesPerCell])
            return false;
    return true;
}

/// The section of degenerate cells that stand for vertices: the host has no section of points, and a loader gives them
/// the shape of the first other section. The number of sections when there is none.
std::size_t vertexSection(Host& host, const Zone& zone) {
    const std::vector<Section>& sections = zone.sections;
    const auto mayBeVertices = [&](std::size_t index) {
        const std::size_t other = index == 0 ? 1 : 0;
        return sections[index].gridOrder == 1 && sections[index].shape == sections[other].shape;
    };
    std::vector<std::size_t> candidates;
    for (std::size_t index = 0; sections.size() > 1 && index < sections.size(); ++index)
        if (mayBeVertices(index))
            candidates.push_back(index);
    if (candidates.empty())
        return sections.size();
    const Loaded nodeMap{host, {zone.number}};
    const auto found = std::find_if(candidates.begin(), candidates.end(), [&](std::size_t index) {
        return hasOneNodePerCell({nodeMap, index}, static_cast<std::size_t>(sections[index].nodesPerElement()));
    });
    return found == candidates.end() ? sections.size() : *found;
}

/// The first type for a section that none before it has; the last one when all are taken.
std::uint8_t cellType(const Zone& zone, const Section& section, const std::vector<SectionCells>& before) {
    const bool isMixedOfOne = zone.type == ZoneType_Mixed && zone.sections.size() == 1;
    std::uint8_t type = 0;
    for (const CellType& row : usualTypes) {
        if (!isTypeOf(section, row))
            continue;
        const bool isTaken = std::any_of(before.begin(), before.end(), [&](const SectionCells& cells) {
            return cells.type == row.code() && cells.hostNodeCount == section.nodesPerElement();
        });
        type = row.code();
        if (!isTaken && !(isMixedOfOne && row.zoneType != ZoneType_Mixed))
            break;
    }
    if (type == 0)
        throw WriteError(fmt::format("Zone {} \"{}\" has {}s of order {}, for which the format has no cells.",
                                     zone.number, zone.name, inWords(section.shape), section.gridOrder));
    return type;
}

} // namespace

bool isTypeOf(const Section& section, std::uint8_t type) {
    const CellType* row = veltra::vtkcells::findCellType(type);
    return type == vertexType ? section.gridOrder == 1 : row && isTypeOf(section, *row);
}

std::vector<SectionCells> sectionCells(Host& host, const Zone& zone, const CellOrder& order) {
    const bool isKnown = !order.file.empty();
    if (zone.type == ZoneType_Ordered) {
        const std::uint64_t cellCount = order.runs.empty() ? 0 : order.runs.front().cellCount;
        return {{vertexType, isKnown ? cellCount : static_cast<std::uint64_t>(zone.nodeCount), 1, {0}}};
    }
    const std::size_t vertices = isKnown ? zone.sections.size() : vertexSection(host, zone);
    std::vector<SectionCells> result;
    for (const Section& section : zone.sections) {
        const auto nodeCount = static_cast<std::uint32_t>(section.nodesPerElement());
        const std::uint8_t type = isKnown                     ? order.types[result.size()]
                                  : result.size() == vertices ? vertexType
                                                              : cellType(zone, section, result);
        result.push_back({type, static_cast<std::uint64_t>(section.elementCount), nodeCount,
                          nodesInFile(type, type == vertexType ? 1 : nodeCount)});
    }
    return result;
}

} // namespace krohost::convert
