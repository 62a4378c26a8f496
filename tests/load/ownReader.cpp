// A file as the host's own reader finds it, which shares nothing with the add-on.

#include "krohost/vtu/decode.h"
#include "krohost/vtu/values.h"
#include "tests/load/Load.h"

#include <gtest/gtest.h>

#include <map>

namespace test {

namespace {

namespace own = krohost::vtu;

Array arrayOf(const own::Document& document, const own::Array& array) {
    std::vector<std::int64_t> integers;
    std::vector<double> reals;
    const own::Decoded decoded = own::decode(document, array, [&](std::span<const std::byte> bytes) {
        own::forEachInteger(*array.type, bytes, [&](std::int64_t value) { integers.push_back(value); });
        own::forEachReal(*array.type, bytes, [&](double value) { reals.push_back(value); });
    });
    EXPECT_TRUE(decoded.faults.empty()) << array.name;
    Array result{array.name, static_cast<ElementType>(*array.type), static_cast<int>(*array.componentCount), reals};
    if (!own::isFloatingPoint(*array.type))
        result.values = integers;
    return result;
}

MeshPiece pieceOf(const own::Document& document, const own::Piece& piece) {
    MeshPiece result;
    result.points = arrayOf(document, piece.points.at(0));
    std::map<std::string, std::vector<std::int64_t>> lists;
    for (const own::Array& array : piece.cells)
        lists[array.name] = valuesAs<std::int64_t>(arrayOf(document, array));
    auto node = lists["connectivity"].cbegin();
    for (std::size_t cell = 0, begin = 0; cell < lists["types"].size(); ++cell) {
        const auto end = static_cast<std::size_t>(lists["offsets"].at(cell));
        const auto nodeCount = static_cast<std::ptrdiff_t>(end - std::exchange(begin, end));
        result.cells.push_back({static_cast<int>(lists["types"][cell]), {node, node + nodeCount}});
        node += nodeCount;
    }
    for (const own::Array& array : piece.pointData)
        result.pointData.push_back(arrayOf(document, array));
    for (const own::Array& array : piece.cellData)
        result.cellData.push_back(arrayOf(document, array));
    return result;
}

} // namespace

ExpectedZone zoneByOwnReader(const std::string& path) {
    const own::Document document = own::readDocument(path);
    std::vector<MeshPiece> pieces;
    for (const own::Piece& piece : document.pieces)
        pieces.push_back(pieceOf(document, piece));
    const std::string version = *document.root.find("version");
    return expectedZone(pieces, {version.at(0) - '0', version.at(2) - '0'});
}

} // namespace test
