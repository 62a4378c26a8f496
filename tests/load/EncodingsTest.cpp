#include "krohost/reader/decode.h"
#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace test {

namespace {

/// All four linear solids, and at the nodes and cells an array of every element type, some with components.
MeshPiece everyType() {
    MeshPiece piece = mixed();
    for (std::size_t index = 0; index < elementTypeNames.size(); ++index) {
        const std::string name(elementTypeNames[index]);
        const auto type = static_cast<ElementType>(index);
        piece = piece.withPointData(variedValues("p" + name, type, piece.pointCount(), static_cast<int>(index % 4) + 1))
                    .withCellData(variedValues("c" + name, type, piece.cells.size()));
    }
    return piece;
}

/// Each encoding with blocks that cut values apart, that fit some arrays exactly, and that are longer than any array,
/// and with base64 text written in each way.
std::vector<Encoding> encodingsInDetail() {
    std::vector<Encoding> detailed;
    for (Encoding encoding : allEncodings())
        for (const std::size_t blockByteCount : {7, 8, 32768})
            for (const auto& [inOneRun, lineLength] : {std::pair{false, 0u}, {false, 19u}, {true, 0u}, {true, 19u}}) {
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

/// The host's own reader finds the arrays of this piece, once for each time that the file has it.
void expectOwnReading(const std::string& path, const MeshPiece& piece) {
    std::vector<Array> arrays = piece.cellArrays();
    arrays.push_back(piece.points);
    for (const std::vector<Array>& more : {piece.pointData, piece.cellData})
        arrays.insert(arrays.end(), more.begin(), more.end());
    std::map<std::string, std::string> expected, found;
    for (const Array& array : arrays)
        expected[array.name] = encodedArray(array, {Format::AppendedRaw}).substr(4); // without its header
    const krohost::reader::Document document = krohost::reader::readDocument(path);
    for (const krohost::reader::Array* array : document.arrays()) {
        found[array->name].clear();
        const auto decoded = decode(document, *array, [&](std::span<const std::byte> bytes) {
            found[array->name].append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        });
        EXPECT_TRUE(decoded.faults.empty() && found[array->name] == expected[array->name]) << array->name;
    }
    EXPECT_EQ(found.size(), expected.size());
}

} // namespace

TEST(Encodings, AllGiveTheSameMeshInBothNodeWidthsAndToTheOwnReader) {
    std::size_t count = 0;
    for (const Encoding& encoding : encodingsInDetail())
        for (const int nodeBitCount : {32, 64}) {
            SCOPED_TRACE(encoding.name());
            MeshPiece piece = everyType();
            piece.cellArrayTypes.fill(static_cast<ElementType>(count++ * 5 / 2 % 8)); // all of them in either width
            const VtuBuilder file = vtu().piece(piece).piece(piece).encoding(encoding);
            Load load{file, {.nodeBitCount = nodeBitCount}};
            expectZone(load, file.expected());
            if (nodeBitCount == 32)
                expectOwnReading(load.path(), piece);
        }
}

TEST(Encodings, AttributesMayBeSpeltAndPaddedAsWritersDo) {
    const VtuBuilder file = vtu().piece(everyType());
    const std::vector<std::pair<const char*, const char*>> rows{
        {" Name=", " name="},     {"\"/>", "     \"/>"},   {"\"raw\"", "\"RAW\""}, {"\"BigEndian\"", "\"bigendian\""},
        {"format=\"ascii\"", ""}, {"type=\"Float32\"", ""}};
    for (const auto& [from, to] : rows)
        for (const Encoding& encoding : {Encoding{}, Encoding{Format::AppendedRaw, false, true}}) {
            SCOPED_TRACE(from);
            Load load{VtuBuilder(file).encoding(encoding).markup(from, to)};
            expectZone(load, file.expected());
        }
}

TEST(Encodings, ValuesBehindThoseThatAreNeededArePassedOver) {
    MeshPiece piece = mixed();
    std::vector<double> coordinates = valuesAs<double>(piece.points);
    coordinates.insert(coordinates.end(), {7, 8, 9});
    piece.points.values = coordinates;
    piece.pointData = {variedValues("pressure", ElementType::Float32, 30),
                       variedValues("velocity", ElementType::Float64, 24, 3)};
    const auto expectLoaded = [](const VtuBuilder& file, const MeshPiece& expected) {
        Load load{file};
        expectZone(load, vtu().piece(expected).expected());
    };
    VtuBuilder several = vtu().piece(piece).attribute("Piece", "NumberOfPoints", "23");
    several.values("material", {1, 2, 2, 255, 9}).values("connectivity", numbers(40));
    several.values("offsets", {8, 14, 19, 23, 1}).values("types", {12, 13, 14, 10, 42, 5});
    VtuBuilder single = vtu().piece(singleCell(12)).values("connectivity", numbers(9));
    for (Encoding encoding : allEncodings()) {
        SCOPED_TRACE(encoding.name());
        encoding.blockByteCount = 20; // of which those after the needed values are not inflated
        expectLoaded(several.encoding(encoding), mixed());
        expectLoaded(single.encoding(encoding), singleCell(12));
    }
    expectLoaded(vtu().piece(mixed()).appendedRaw().headerWord("pressure", 0, 200), mixed());
}

TEST(Encodings, ADamagedBlockIsPassedOverAndWhatFollowsMovesUp) {
    constexpr std::size_t blockByteCount = 512;
    const Array values = integers("values", ElementType::Int32, numbers(512)); // four blocks
    const MeshPiece piece = sideBySide(std::vector(64, hexahedron())).withPointData(values);
    const std::string text = vtu().piece(piece).appendedRaw().compressed(blockByteCount).text();
    const std::string stored = encodedArray(values, {Format::AppendedRaw, true, false, false, blockByteCount});
    std::vector<std::uint32_t> words(7);
    std::memcpy(words.data(), stored.data(), 4 * words.size());
    const std::size_t firstBlock = text.find(stored) + 4 * words.size();
    bool hasMoved = false, hasGivenSome = false;
    for (std::uint32_t damaged = 0; damaged < words[4]; ++damaged) { // each byte of the second block in turn
        std::string damagedText = text;
        damagedText.at(firstBlock + words[3] + damaged) ^= 0x55;
        // What zlib makes of each block, one after the other, is what the host gets.
        std::string expected(4 * blockByteCount, '\0');
        std::size_t place = firstBlock, written = 0;
        for (std::size_t block = 3; block < words.size(); place += words[block++]) {
            uLongf byteCount = blockByteCount;
            uncompress(reinterpret_cast<Bytef*>(expected.data() + written), &byteCount,
                       reinterpret_cast<const Bytef*>(damagedText.data() + place), words[block]);
            written += byteCount;
        }
        std::fill(expected.begin() + static_cast<std::ptrdiff_t>(written), expected.end(), '\0');
        hasMoved = hasMoved || written == 3 * blockByteCount;
        hasGivenSome = hasGivenSome || (written > 3 * blockByteCount && written < 4 * blockByteCount);
        Load load{damagedText};
        EXPECT_TRUE(load.bytes(load.variableNumber("values")) == expected) << damaged;
        EXPECT_EQ(load.dialog(), "");
    }
    EXPECT_TRUE(hasMoved && hasGivenSome);
}

TEST(Encodings, LongArraysAreReadInParts) {
    const MeshPiece row = sideBySide(std::vector(15000, hexahedron()));
    const auto values = [&](ElementType type, int componentCount) {
        return variedValues("v" + std::to_string(componentCount), type, row.pointCount(), componentCount);
    };
    const MeshPiece piece =
        row.withPointData(values(ElementType::Int32, 1)).withPointData(values(ElementType::Int16, 3));
    for (const Encoding& encoding : {Encoding{}, {Format::AppendedRaw}, {Format::Base64, true, true}}) {
        SCOPED_TRACE(encoding.name());
        const VtuBuilder file = vtu().piece(piece).encoding(encoding);
        Load load{file};
        expectZone(load, file.expected());
    }
}

} // namespace test
