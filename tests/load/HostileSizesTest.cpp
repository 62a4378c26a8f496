#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace test {

namespace {

constexpr std::uint64_t huge = std::uint64_t{1} << 60;

/// In each format, plain and compressed, with header words wide enough for anything.
std::vector<Encoding> wideEncodings() {
    std::vector<Encoding> encodings = allEncodings();
    std::erase_if(encodings, [](const Encoding& encoding) {
        return encoding.bigEndian || (encoding.format != Format::Ascii && !encoding.header64);
    });
    for (Encoding& encoding : encodings)
        encoding.blockByteCount = 20; // five blocks for the 92 bytes of "pressure"
    return encodings;
}

/// Demands everything; every demand that fails shows one dialog. Returns the names of what failed.
std::vector<std::string> failedDemands(Load& load) {
    const std::size_t dialogsBefore = load.host.dialogs().size();
    std::vector<std::string> failed;
    for (const krohost::DemandResult& result : load.host.demandAll())
        if (!result.isLoaded)
            failed.push_back(load.host.dataset().name(result.target));
    EXPECT_EQ(load.host.dialogs().size() - dialogsBefore, failed.size()) << load.dialog();
    return failed;
}

const std::string pressure = "variable 4 \"pressure\" of zone 1 \"mesh\"";
const std::string nodeMap = "the node map of zone 1 \"mesh\"";

/// The file loads and one demand fails, with one dialog.
void expectFailingDemand(const VtuBuilder& file, const std::string& target) {
    Load load{file};
    ASSERT_TRUE(load.loaded()) << load.dialog();
    EXPECT_EQ(failedDemands(load), std::vector{target});
}

void expectFailingLoad(const VtuBuilder& file) {
    Load load{file};
    EXPECT_FALSE(load.loaded());
    EXPECT_EQ(load.host.dialogs().size(), 1) << load.dialog();
}

} // namespace

TEST(HostileSizes, NumbersOfPointsAndCellsBeyondTheFileAreRefused) {
    for (const Encoding& encoding : wideEncodings())
        for (const char* attribute : {"NumberOfPoints", "NumberOfCells"})
            for (const char* count : {"24", "1000000000000", "18446744073709551615"}) {
                if (encoding.format == Format::Ascii && attribute[8] == 'P' && count[0] == '2')
                    continue; // one more point is found out when the text is read
                SCOPED_TRACE(encoding.name() + " " + attribute + " " + count);
                expectFailingLoad(vtu().piece(mixed()).encoding(encoding).attribute("Piece", attribute, count));
            }
}

TEST(HostileSizes, ArraysOfOtherLengthsFailTheirDemandOnly) {
    for (const Encoding& encoding : wideEncodings()) {
        SCOPED_TRACE(encoding.name());
        for (const std::size_t count : {0, 1, 22, 24, 46})
            expectFailingDemand(vtu().piece(mixed()).encoding(encoding).values("pressure", numbers(count)), pressure);
        for (const MeshPiece& piece : {mixed(), singleCell(12), singleCell(11)}) {
            const std::size_t count = piece.pointCount(); // which is the number of nodes of these cells
            for (const std::size_t wrong : {2 * count, count - 1, std::size_t{0}})
                expectFailingDemand(
                    vtu().piece(piece).encoding(encoding).values("connectivity", std::vector<std::int64_t>(wrong)),
                    nodeMap);
        }
    }
}

TEST(HostileSizes, HeaderWordsThatTheFileCannotHoldAreRefused) {
    // Compressed or not, position, word.
    const std::vector<std::tuple<bool, std::size_t, std::uint64_t>> rows{
        {false, 0, huge}, {false, 0, ~0ull}, {true, 0, huge << 1},        {true, 3, ~0ull - 7},
        {true, 1, huge},  {true, 2, huge},   {true, 1, (huge << 2) + 20}, {true, 0, 0}};
    for (const Encoding& encoding : wideEncodings()) {
        if (encoding.format == Format::Ascii)
            continue;
        SCOPED_TRACE(encoding.name());
        const VtuBuilder file = vtu().piece(mixed()).encoding(encoding);
        for (const auto& [compressed, position, word] : rows)
            if (compressed == encoding.compressed)
                expectFailingDemand(VtuBuilder(file).headerWord("pressure", position, word), pressure);
        for (const char* array : {"Points", "types", "offsets"})
            expectFailingLoad(VtuBuilder(file).headerWord(array, 0, huge));
    }
}

TEST(HostileSizes, AFileThatChangesAfterItsLoadFillsNoMoreThanItsZone) {
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
        EXPECT_EQ(failedDemands(load), std::vector{nodeMap});
        EXPECT_TRUE(load.dialog().ends_with(reason)) << load.dialog();
    }
}

} // namespace test
