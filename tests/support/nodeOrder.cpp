// From the table that the comparison with another toolkit holds to the places of the nodes.

#include "tests/support/CellKind.h"

#include "tests/support/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <numeric>

namespace test {

std::vector<std::size_t> nodeOrder(int type, std::size_t nodes, FileVersion version) {
    static const auto table = nlohmann::json::parse(readFile(NODE_ORDERS));
    std::vector<std::size_t> places(nodes);
    std::iota(places.begin(), places.end(), 0);
    for (const auto& row : table)
        if (row[0] == type && row[1] == nodes)
            places = row[2].get<std::vector<std::size_t>>();
    if (type == 72 && version < FileVersion{2, 1}) { // in which the last two edges were exchanged
        const auto count = static_cast<std::size_t>(gridOrder(type, nodes) - 1), edge = 8 + 10 * count;
        for (std::size_t& place : places)
            if (place >= edge && place < edge + 2 * count)
                place = place < edge + count ? place + count : place - count;
    }
    return places;
}

} // namespace test
