#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <tuple>

namespace test {

namespace {

constexpr std::uint64_t huge = std::uint64_t{1} << 60;

/// Only the demand of the target fails, with one dialog.
void expectOneFailure(Load& load, const std::string& target) {
    std::string failed;
    for (const krohost::DemandResult& result : load.host.demandAll())
        failed += result.isLoaded ? "" : load.host.dataset().name(result.target);
    EXPECT_EQ(failed, target);
    EXPECT_EQ(load.host.dialogs().size(), 1) << load.dialog();
}

/// The same of a file, or its load fails where nothing is to be demanded.
void expectOneFailure(const VtuBuilder& file, const std::string& target = "") {
    Load load{file};
    EXPECT_EQ(load.loaded(), !target.empty());
    expectOneFailure(load, target);
}

const std::string pressure = "variable 4 \"pressure\" of zone 1 \"mesh\"";
const std::string nodeMap = "the node map of zone 1 \"mesh\"";

} // namespace

TEST(HostileSizes, ThatAFileDoesNotHoldAreRefusedInEveryEncoding) {
    // Header words of "pressure": compressed or not, position, word.
    const std::vector<std::tuple<bool, std::size_t, std::uint64_t>> words{
        {false, 0, huge}, {false, 0, ~0ull}, {true, 0, huge << 1},        {true, 3, ~0ull - 7},
        {true, 1, huge},  {true, 2, huge},   {true, 1, (huge << 2) + 20}, {true, 0, 0}};
    for (Encoding encoding : allEncodings()) {
        const bool isText = encoding.format == Format::Ascii;
        if (encoding.bigEndian || (!isText && !encoding.header64))
            continue;
        SCOPED_TRACE(encoding.name());
        encoding.blockByteCount = 20; // five blocks for the 92 bytes of "pressure"
        const auto file = [&](const MeshPiece& piece) { return vtu().piece(piece).encoding(encoding); };
        for (const char* count : {"24", "1000000000000", "18446744073709551615"}) {
            expectOneFailure(file(mixed()).attribute("Piece", "NumberOfCells", count));
            if (!isText || count[0] != '2') // one more point is found out when the text is read
                expectOneFailure(file(mixed()).attribute("Piece", "NumberOfPoints", count));
        }
        for (const std::size_t count : {0, 1, 22})
            expectOneFailure(file(mixed()).values("pressure", numbers(count)), pressure);
        for (const MeshPiece& piece : {mixed(), singleCell(12), singleCell(11)}) {
            const std::size_t count = piece.pointCount(); // which is the number of nodes of these cells
            for (const std::size_t wrong : {count - 1, std::size_t{0}})
                expectOneFailure(file(piece).values("connectivity", std::vector<std::int64_t>(wrong)), nodeMap);
        }
        for (const auto& [compressed, position, word] : words)
            if (!isText && compressed == encoding.compressed)
                expectOneFailure(file(mixed()).headerWord("pressure", position, word), pressure);
        for (const char* array : {"Points", "types", "offsets"})
            if (!isText)
                expectOneFailure(file(mixed()).headerWord(array, 0, huge));
    }
}

TEST(HostileSizes, OfAFileThatChangesAfterItsLoadFillNoMoreThanItsZone) {
    const std::string again = "; load the file again";
    const std::vector<std::pair<VtuBuilder, std::string>> rows{
        {vtu().piece(mixed()).values("types", {12, 13, 14, 9}),
         "The cells of the file are not those that it had when it was opened" + again},
        {vtu().piece(mixed()).values("types", {10, 10, 14, 13}).values("offsets", {4, 8, 13, 19}),
         "The cells of section 4 do not fill the 4 nodes that the zone has for them" + again},
        {vtu().piece(mixed()).values("offsets", {8, 7, 12, 16}), "was opened" + again},
        {vtu().piece(mixed()).values("types", {12, 13, 14}), "DataArray \"types\" holds 3 values but 4 are needed"}};
    for (const auto& [changed, reason] : rows) {
        Load load{vtu().piece(mixed()).appendedRaw()}; // so that all else keeps its place
        VtuBuilder(changed).appendedRaw().write(load.path());
        expectOneFailure(load, nodeMap);
        EXPECT_TRUE(load.dialog().ends_with(reason)) << load.dialog();
    }
}

} // namespace test
