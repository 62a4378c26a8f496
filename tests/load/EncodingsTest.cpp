#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace test {

namespace {

/// All four linear solids, and at the nodes and cells an array of every element type, some with components.
MeshPiece everyType() {
    MeshPiece piece = mixed();
    for (std::size_t type = 0; type < elementTypeNames.size(); ++type) {
        const std::string name(elementTypeNames[type]);
        const int componentCount = static_cast<int>(type % 4) + 1;
        piece.pointData.push_back(
            variedValues("p" + name, static_cast<ElementType>(type), piece.pointCount(), componentCount));
        piece.cellData.push_back(variedValues("c" + name, static_cast<ElementType>(type), piece.cells.size()));
    }
    return piece;
}

/// Each encoding with blocks that cut values apart, that fit some arrays exactly, and that are longer than any array,
/// and with base64 text written in each way.
std::vector<Encoding> encodingsInDetail() {
    std::vector<Encoding> detailed;
    for (Encoding encoding : allEncodings())
        for (const std::size_t blockByteCount : {7, 8, 32768})
            for (const bool inOneRun : {false, true})
                for (const std::size_t lineLength : {0, 19}) {
                    const bool isText = encoding.format == Format::Base64 || encoding.format == Format::AppendedBase64;
                    if ((!encoding.compressed && blockByteCount != 7) || (!isText && (inOneRun || lineLength != 0)))
                        continue;
                    encoding.blockByteCount = blockByteCount;
                    encoding.inOneRun = inOneRun;
                    encoding.lineLength = lineLength;
                    detailed.push_back(encoding);
                }
    return detailed;
}

} // namespace

TEST(Encodings, AllGiveTheSameMeshInBothNodeWidths) {
    VtuBuilder file = vtu().piece(everyType()).piece(everyType());
    for (const Encoding& encoding : encodingsInDetail())
        for (const int nodeBitCount : {32, 64}) {
            SCOPED_TRACE(encoding.name() + ", blocks of " + std::to_string(encoding.blockByteCount) +
                         (encoding.inOneRun ? ", one run" : "") + ", lines of " + std::to_string(encoding.lineLength));
            Load load{file.encoding(encoding), {.nodeBitCount = nodeBitCount}};
            expectZone(load, file.expected());
        }
}

TEST(Encodings, AttributesMayBeSpeltAndPaddedAsWritersDo) {
    for (VtuBuilder file :
         {vtu().lowerCaseNames(), vtu().appendedRaw().paddedOffsets(), vtu().appendedRaw().markup("\"raw\"", "\"RAW\""),
          vtu().appendedRaw().bigEndian().markup("\"BigEndian\"", "\"bigendian\""),
          vtu().markup("format=\"ascii\"", "").markup("type=\"Float32\"", "")}) {
        Load load{file.piece(everyType())};
        expectZone(load, file.expected());
    }
}

TEST(Encodings, CellArraysMayHaveAnyIntegerType) {
    for (int type = 0; type < 8; ++type) {
        MeshPiece piece = mixed();
        piece.connectivityType = piece.offsetsType = piece.typesType = static_cast<ElementType>(type);
        for (const Encoding& encoding : {Encoding{}, Encoding{Format::AppendedRaw, false, true}}) {
            VtuBuilder file = vtu().piece(piece).encoding(encoding);
            Load load{file};
            expectZone(load, file.expected());
        }
    }
}

TEST(Encodings, ADamagedBlockIsPassedOverAndWhatFollowsMovesUp) {
    constexpr std::size_t blockByteCount = 64;
    const MeshPiece box = hexahedronBox(3);
    const std::string text = vtu().piece(box).appendedRaw().compressed(blockByteCount).text();
    const std::string stored =
        encodedArray(box.pointData[0], {Format::AppendedRaw, true, false, false, blockByteCount});
    const std::size_t start = text.find(stored);
    ASSERT_NE(start, std::string::npos);
    std::vector<std::uint32_t> words(7); // of four blocks
    std::memcpy(words.data(), stored.data(), 4 * words.size());
    ASSERT_EQ(words[0], 4);
    const std::size_t firstBlock = start + 4 * words.size();
    bool hasMoved = false;
    for (std::uint32_t damaged = 0; damaged < words[4]; ++damaged) { // each byte of the second block in turn
        std::string damagedText = text;
        damagedText[firstBlock + words[3] + damaged] ^= 0x55;
        // What zlib makes of each block, one behind the other, is what the host gets.
        std::string expected(box.pointCount() * sizeof(float), '\0');
        std::size_t place = firstBlock;
        std::size_t written = 0;
        for (std::size_t block = 0; block < words[0]; place += words[3 + block++]) {
            uLongf byteCount = blockByteCount;
            uncompress(reinterpret_cast<Bytef*>(expected.data() + written), &byteCount,
                       reinterpret_cast<const Bytef*>(damagedText.data() + place), words[3 + block]);
            written += byteCount;
        }
        std::fill(expected.begin() + static_cast<std::ptrdiff_t>(written), expected.end(), '\0');
        hasMoved = hasMoved || written + blockByteCount == expected.size();
        Load load{Files{{"mesh.vtu", damagedText}}};
        EXPECT_TRUE(load.bytes(1, load.variableNumber("pressure")) == expected) << damaged;
        EXPECT_EQ(load.dialog(), "");
    }
    EXPECT_TRUE(hasMoved);
}

TEST(Encodings, SeveralThreadsGetWhatOneGets) {
    Load load{vtu().piece(hexahedronBox(9)).piece(hexahedronBox(9)).appendedBase64().compressed(256).bigEndian()};
    const auto alone = load.host.demandAll();
    const auto together = load.host.demandAll({.threadCount = 4});
    ASSERT_EQ(together.size(), alone.size());
    for (std::size_t index = 0; index < alone.size(); ++index) {
        EXPECT_TRUE(alone[index].isLoaded && together[index].isLoaded);
        ASSERT_EQ(together[index].parts.size(), alone[index].parts.size());
        for (std::size_t part = 0; part < alone[index].parts.size(); ++part)
            EXPECT_EQ(together[index].parts[part].crc32, alone[index].parts[part].crc32);
    }
}

} // namespace test
