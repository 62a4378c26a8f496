#include "krohost/write/cellOrder.h"

#include "krohost/write/Loss.h"
#include "krohost/write/WriteError.h"
#include "krohost/write/documentValues.h"
#include "krohost/write/zoneFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

namespace krohost::write {

namespace {

using vtu::Document;

bool needsOrder(const Zone& zone) {
    return zone.sections.size() > 1 &&
           std::any_of(zone.variables.begin(), zone.variables.end(), [](const ZoneVariable& variable) {
               return variable.data && variable.location == ValueLocation_CellCentered;
           });
}

/// Runs of cells of one type and number of nodes, the sections in the order in which they first appear.
std::vector<CellRun> readRuns(const std::filesystem::path& file) {
    const Document document = vtu::readDocument(file, pollInterrupt);
    if (document.malformation)
        throw WriteError(document.malformation->message);
    std::map<std::pair<std::uint8_t, std::uint64_t>, std::size_t> sections;
    std::vector<CellRun> runs;
    for (const vtu::Piece& piece : document.pieces) {
        CellReader cells{document, piece};
        while (const auto cell = cells.next()) {
            const auto kind = std::pair{cell->type, cell->nodeCount};
            const std::size_t section = sections.emplace(kind, sections.size()).first->second;
            if (runs.empty() || runs.back().sectionIndex != section)
                runs.push_back({section, 0});
            ++runs.back().cellCount;
        }
    }
    return runs;
}

bool fits(const std::vector<CellRun>& runs, const Zone& zone) {
    std::vector<std::uint64_t> counts(zone.sections.size());
    for (const CellRun& run : runs) {
        if (run.sectionIndex >= counts.size())
            return false;
        counts[run.sectionIndex] += run.cellCount;
    }
    return std::equal(counts.begin(), counts.end(), zone.sections.begin(),
                      [](std::uint64_t count, const Section& section) {
                          return count == static_cast<std::uint64_t>(section.elementCount);
                      });
}

[[noreturn]] void failForOrder(const Zone& zone, const std::string& reason) {
    throw WriteError(fmt::format("Nothing was written, because it is not known in which order the values at cells of "
                                 "zone {} \"{}\" come: {}",
                                 zone.number, zone.name, reason));
}

} // namespace

CellOrders cellOrders(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs) {
    CellOrders orders(dataset.zones.size());
    if (std::none_of(dataset.zones.begin(), dataset.zones.end(), needsOrder))
        return orders;
    const auto [files, areKnown] = zoneFiles(inputs, orders.size());
    for (std::size_t index = 0; index < orders.size(); ++index) {
        const Zone& zone = dataset.zones[index];
        if (!needsOrder(zone))
            continue;
        if (!areKnown)
            failForOrder(zone, "it is not known which file the zone comes from");
        try {
            orders[index] = readRuns(files[index]);
        } catch (const WriteError& error) {
            failForOrder(zone, error.what());
        }
        if (!fits(orders[index], zone))
            failForOrder(zone, fmt::format("\"{}\" has other cells", files[index].string()));
    }
    return orders;
}

} // namespace krohost::write
