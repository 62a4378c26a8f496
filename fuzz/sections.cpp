// Grouping of cells into sections: types and numbers of nodes from the input, written in an encoding that it tells,
// against grouping them one by one.

#include "fuzz/fuzz.h"
#include "fuzz/meshInput.h"

#include "loader/mesh/sections.h"
#include "loader/xml/VtkFileXMLParser.h"

#include "loader/sdk/exceptions.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <optional>
#include <stdexcept>

namespace {

using namespace veltra::vtkfile;

struct NoProgress final : ParseProgress {
    bool report(const std::string&, std::uint64_t) override { return true; }
};

struct Cells {
    int type;
    std::int64_t nodeCount;
    std::int64_t cellCount;
};

/// Of three bytes each: any type or, more often, one that is accepted; a number of nodes or, more often, an order.
std::vector<Cells> takeCells(fuzz::Input& input) {
    std::vector<Cells> cells;
    while (!input.empty() && cells.size() < 32) {
        const std::uint8_t type = input.byte(), nodes = input.byte(), count = input.byte();
        const test::CellKind& kind = test::acceptedCells[type % test::acceptedCells.size()];
        cells.push_back({type < 200 ? kind.type : type - 200, nodes, count < 254 ? 1 + count % 8 : 900});
        if (nodes < 128)
            cells.back().nodeCount =
                static_cast<std::int64_t>(test::nodeCount(kind.shape, kind.lowestOrder + nodes % 4));
    }
    return cells;
}

bool isSame(const test::ExpectedSection& expected, const Section& section) {
    return static_cast<int>(expected.shape) == section.shape &&
           expected.gridOrder == static_cast<int>(section.gridOrder) &&
           expected.elementCount == static_cast<std::int64_t>(section.cellCount);
}

/// Nothing when the cells are to be refused.
std::optional<std::vector<test::ExpectedSection>> groupSlowly(const std::vector<Cells>& cells) {
    std::vector<test::ExpectedSection> sections;
    std::vector<std::pair<int, std::int64_t>> kinds;
    int dimension = -1;
    try {
        for (const auto& [type, nodeCount, cellCount] : cells) {
            const test::CellKind& kind = test::cellKind(type);
            const int order = test::gridOrder(type, static_cast<std::size_t>(nodeCount));
            const int previous = type == 1 ? kind.dimension : std::exchange(dimension, kind.dimension);
            if (previous != -1 && previous != kind.dimension)
                return std::nullopt;
            const auto found = std::ranges::find(kinds, std::pair(type, nodeCount)) - kinds.begin();
            if (found == std::ssize(kinds)) {
                kinds.emplace_back(type, nodeCount);
                sections.push_back({kind.shape, order, 0, {}});
            }
            sections[static_cast<std::size_t>(found)].elementCount += cellCount;
        }
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
    if (sections.empty())
        sections.push_back({test::Shape::None, 1, 0, {}});
    const auto isOther = [](const test::ExpectedSection& section) { return section.shape != test::Shape::None; };
    const auto other = std::ranges::find_if(sections, isOther);
    for (test::ExpectedSection& section : sections)
        if (!isOther(section) && other != sections.end())
            section.shape = other->shape;
    return sections.size() > 16 ? std::nullopt : std::optional(sections);
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    test::Encoding encoding = takeEncoding(input);
    test::MeshPiece piece = test::hexahedron();
    piece.cellArrayTypes[1] = static_cast<test::ElementType>(4 + input.byte() % 4); // 32 bits and more
    const std::vector<Cells> cells = takeCells(input);
    std::vector<std::int64_t> types, offsets;
    for (const auto& [type, nodeCount, cellCount] : cells)
        for (std::int64_t cell = 0; cell < cellCount; ++cell) {
            types.push_back(type);
            offsets.push_back((offsets.empty() ? 0 : offsets.back()) + nodeCount);
        }
    encoding.blockByteCount = std::max(encoding.blockByteCount, types.size()); // or the time goes into compressing
    const std::filesystem::path path =
        scratchFile("sections.vtu", test::vtu()
                                        .piece(piece)
                                        .encoding(encoding)
                                        .attribute("Piece", "NumberOfCells", std::to_string(types.size()))
                                        .values("types", types)
                                        .values("offsets", offsets)
                                        .text());
    VtkFileXMLParser parser(std::make_shared<const boost::filesystem::path>(path.string()),
                            std::make_unique<NoProgress>());
    parser.parse();
    Zone zone;
    zone.pieces = parser.takePieces();
    const auto expected = groupSlowly(cells);
    try {
        const std::vector<Section> sections = groupSections(openFile(zone.pieces.front().points), zone);
        require(expected.has_value(), "cells that are not supported are refused");
        require(std::ranges::equal(*expected, sections, isSame), "cells are grouped by type and number of nodes");
        return std::to_string(sections.size()) + " sections";
    } catch (const veltra::IOException& failure) {
        require(!expected, "only cells that are not supported are refused");
        return sentence(failure.what());
    }
}
