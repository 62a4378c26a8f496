/// What a zone's file says of its cells and the host does not.
#pragma once

#include "krohost/convert/Loss.h"
#include "krohost/host/model/Dataset.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace krohost::convert {

/// Cells of one section that follow each other in a file.
struct SectionRun {
    std::size_t sectionIndex;
    std::uint64_t cellCount;
};

/// The cells of a zone as its file has them; an ordered zone has one section, of vertices. Node lists come section by
/// section in the host, values at cells in the order of the file.
struct CellOrder {
    std::filesystem::path file = {};      ///< empty where it is not known, and nothing else is then
    std::vector<SectionRun> runs = {};    ///< all of its cells
    std::vector<std::uint8_t> types = {}; ///< of the sections
};
using CellOrders = std::vector<CellOrder>; ///< zone by zone

/// Reads them from the files of the zones. Says of which zones that cannot be done. Throws WriteError where values
/// would be at other cells than theirs, and Interrupted.
CellOrders cellOrders(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs, Losses& losses);

/// The point, from 0, of each vertex of an ordered zone; where the file is not known, each point once. Throws
/// WriteError, also where there is no such point, and Interrupted.
void forEachVertex(const Zone& zone, const CellOrder& order, const std::function<void(std::int64_t)>& use);

/// Throws WriteError unless the zone has this node of a cell, from 0, as one of so many points.
void requirePoint(const Zone& zone, std::int64_t node, std::int64_t pointCount);

} // namespace krohost::convert
