#include "krohost/convert/cellOrder.h"

#include "krohost/convert/Loss.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/documentValues.h"
#include "krohost/convert/vtkCells.h"
#include "krohost/convert/zoneFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace krohost::convert {

namespace {

using reader::Document;

bool hasValuesAtCells(const Zone& zone) {
    return std::any_of(zone.variables.begin(), zone.variables.end(), [](const ZoneVariable& variable) {
        return variable.data && variable.location == ValueLocation_CellCentered;
    });
}

/// A type of cells and their number of nodes; the sections have them in the order in which they first appear.
using CellKind = std::pair<std::uint8_t, std::uint64_t>;

/// Whether the cells of the file, which are of these kinds, can be those of the zone.
bool fits(const CellOrder& order, const std::vector<CellKind>& kinds, const Zone& zone) {
    if (zone.type == ZoneType_Ordered)
        return kinds.empty() || kinds == std::vector{CellKind{vertexType, 1}};
    std::vector<std::uint64_t> counts(kinds.size());
    for (const SectionRun& run : order.runs)
        counts[run.sectionIndex] += run.cellCount;
    if (kinds.size() != zone.sections.size())
        return false;
    for (std::size_t index = 0; index < kinds.size(); ++index) {
        const Section& section = zone.sections[index];
        if (counts[index] != static_cast<std::uint64_t>(section.elementCount) ||
            !isTypeOf(section, kinds[index].first) ||
            (kinds[index].first != vertexType &&
             kinds[index].second != static_cast<std::uint64_t>(section.nodesPerElement())))
            return false;
    }
    return true;
}

/// Not known where the file does not fit the zone.
CellOrder readOrder(const std::filesystem::path& file, const Zone& zone) {
    const Document document = reader::readDocument(file, pollInterrupt);
    if (document.malformation)
        throw WriteError(document.malformation->message);
    std::map<CellKind, std::size_t> sections;
    std::vector<CellKind> kinds;
    CellOrder order{file};
    for (const reader::Piece& piece : document.pieces) {
        CellReader cells{document, piece};
        while (const auto cell = cells.next()) {
            if (!order.runs.empty() && kinds[order.runs.back().sectionIndex] == CellKind{cell->type, cell->nodeCount}) {
                ++order.runs.back().cellCount;
                continue;
            }
            const auto [section, isNew] = sections.emplace(CellKind{cell->type, cell->nodeCount}, kinds.size());
            if (isNew) {
                kinds.push_back(section->first);
                order.types.push_back(cell->type);
            }
            order.runs.push_back({section->second, 1});
        }
    }
    return fits(order, kinds, zone) ? order : CellOrder{};
}

/// Values at cells would be at other cells than theirs, which is worse than none.
void addUnknown(const Zone& zone, const std::string& reason, Losses& losses) {
    const bool isOrdered = zone.type == ZoneType_Ordered;
    if (hasValuesAtCells(zone) && (isOrdered || zone.sections.size() > 1))
        throw WriteError(
            fmt::format("Nothing was written, because it is not known in which order the values at cells of "
                        "zone {} \"{}\" come: {}",
                        zone.number, zone.name, reason));
    losses.add(
        {"changed", fmt::format("Zone {} \"{}\": the order and the types of its cells are not known ({}); they "
                                "are written {}.",
                                zone.number, zone.name, reason,
                                isOrdered ? "as a vertex on each point" : "section by section, with usual types")});
}

} // namespace

CellOrders cellOrders(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs, Losses& losses) {
    CellOrders orders(dataset.zones.size());
    const auto [files, collections, areKnown] = zoneFiles(inputs, orders.size());
    for (std::size_t index = 0; index < orders.size(); ++index) {
        const Zone& zone = dataset.zones[index];
        std::string reason = "it is not known which file the zone comes from";
        try {
            if (areKnown) {
                reason = fmt::format("\"{}\" has other cells", files[index].string());
                orders[index] = readOrder(files[index], zone);
            }
        } catch (const WriteError& error) {
            reason = error.what();
        }
        if (orders[index].file.empty())
            addUnknown(zone, reason, losses);
    }
    return orders;
}

void forEachVertex(const Zone& zone, const CellOrder& order, const std::function<void(std::int64_t)>& use) {
    if (order.file.empty()) {
        for (std::int64_t node = 0; node < zone.nodeCount; ++node)
            use(node);
        return;
    }
    const Document document = reader::readDocument(order.file);
    std::int64_t shift = 0;
    for (const reader::Piece& piece : document.pieces) {
        const std::uint64_t cellCount = piece.cellCount.value_or(0);
        const auto pointCount = static_cast<std::int64_t>(piece.pointCount.value_or(0));
        std::optional<NodeReader> nodes;
        for (std::uint64_t cell = 0; cell < cellCount; ++cell) {
            if (!nodes)
                nodes.emplace(document, piece);
            const auto node = static_cast<std::int64_t>(nodes->next());
            requirePoint(zone, node, pointCount);
            use(node + shift);
        }
        shift += pointCount;
    }
}

void requirePoint(const Zone& zone, std::int64_t node, std::int64_t pointCount) {
    if (node < 0 || node >= pointCount)
        throw WriteError(fmt::format("Zone {} \"{}\" has a cell with node {}, where there are {} points.", zone.number,
                                     zone.name, node, pointCount));
}

} // namespace krohost::convert
