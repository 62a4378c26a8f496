#include "krohost/vtu/decode.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <lz4.h>
#include <lzma.h>

namespace {

using namespace krohost::vtu;
using test::vtu;

const Array& named(const Document& document, const std::string& name) {
    for (const Array* array : document.arrays())
        if (array->name == name)
            return *array;
    throw std::out_of_range(name);
}

struct Bytes {
    std::string bytes;
    Decoded decoded;
};

Bytes decodeAll(const Document& document, const Array& array) {
    Bytes result;
    result.decoded = decode(document, array, [&](std::span<const std::byte> some) {
        result.bytes.append(reinterpret_cast<const char*>(some.data()), some.size());
    });
    return result;
}

/// As the decoder hands them on.
std::string bytesOf(const test::Array& array) {
    std::string bytes;
    test::asElement(array.type, [&](auto zero) {
        for (const auto value : test::valuesAs<decltype(zero)>(array))
            bytes += test::valueBytes(value, false);
    });
    return bytes;
}

std::string compressed(Compressor compressor, const std::string& block) {
    std::string result(block.size() + 1000, '\0');
    std::size_t byteCount = 0;
    if (compressor == Compressor::lz4)
        byteCount = static_cast<std::size_t>(
            LZ4_compress_default(block.data(), result.data(), int(block.size()), int(result.size())));
    else
        lzma_easy_buffer_encode(5, LZMA_CHECK_CRC32, nullptr, reinterpret_cast<const uint8_t*>(block.data()),
                                block.size(), reinterpret_cast<uint8_t*>(result.data()), &byteCount, result.size());
    result.resize(byteCount);
    return result;
}

/// A file with one array of bytes in blocks of eight.
std::string fileOf(const std::string& compressor, const std::vector<std::string>& blocks, std::uint32_t lastByteCount) {
    std::string header, data;
    for (const std::uint32_t word : {static_cast<std::uint32_t>(blocks.size()), 8U, lastByteCount})
        header += test::valueBytes(word, false);
    for (const std::string& block : blocks) {
        header += test::valueBytes(static_cast<std::uint32_t>(block.size()), false);
        data += block;
    }
    return "<VTKFile type=\"UnstructuredGrid\" compressor=\"" + compressor +
           "\"><FieldData><DataArray Name=\"a\" type=\"Int8\" format=\"appended\" offset=\"0\"/></FieldData>"
           "<AppendedData encoding=\"raw\">_" +
           header + data;
}

} // namespace

TEST(Vtu, ReadsEveryEncodingAsItWasWritten) {
    const test::TemporaryFolder folder;
    const test::MeshPiece piece = test::mixed();
    for (test::Encoding encoding : test::allEncodings()) {
        encoding.blockByteCount = 100; // blocks that end within values
        vtu().piece(piece).timeValue(0.5).encoding(encoding).write(folder / "a.vtu");
        const Document document = readDocument(folder / "a.vtu");
        ASSERT_FALSE(document.malformation) << encoding.name();
        for (const auto& arrays : {piece.pointData, piece.cellData, {piece.points}, piece.cellArrays()})
            for (const test::Array& array : arrays) {
                const Bytes read = decodeAll(document, named(document, array.name));
                EXPECT_EQ(read.bytes, bytesOf(array)) << array.name << ", " << encoding.name();
                EXPECT_TRUE(read.decoded.faults.empty()) << encoding.name();
            }
    }
}

TEST(Vtu, InflatesLz4AndLzmaBlocks) {
    const test::TemporaryFolder folder;
    for (const auto& [compressor, name] :
         {std::pair{Compressor::lz4, "vtkLZ4DataCompressor"}, std::pair{Compressor::lzma, "vtkLZMADataCompressor"}}) {
        std::vector<std::string> blocks{compressed(compressor, "12345678"), compressed(compressor, "abc")};
        folder.write("a.vtu", fileOf(name, blocks, 3));
        const Document document = readDocument(folder / "a.vtu");
        EXPECT_EQ(decodeAll(document, named(document, "a")).bytes, "12345678abc") << name;
        blocks.front() = std::string(blocks.front().size(), '\xFF');
        folder.write("a.vtu", fileOf(name, blocks, 3));
        const Bytes damaged = decodeAll(document, named(document, "a"));
        EXPECT_EQ(damaged.bytes, std::string(8, '\0') + "abc") << name;
        ASSERT_EQ(damaged.decoded.faults.size(), 1) << name;
        const Fault& fault = damaged.decoded.faults.front();
        EXPECT_EQ(fault.message(), "block 0 at byte " + std::to_string(*document.appendedBegin + 20) +
                                       " is damaged: 0 of 8 bytes inflate before the damage shows");
    }
}

TEST(Vtu, EveryPrefixOfAFileIsReadOrFaulty) {
    const test::TemporaryFolder folder;
    for (const bool isRaw : {true, false}) {
        auto file = vtu().piece(test::hexahedron()).compressed(64);
        const std::string text = (isRaw ? file.appendedRaw() : file.base64()).text();
        const std::size_t wholeByteCount = text.rfind(isRaw ? "\n  </AppendedData>" : "</VTKFile>");
        for (std::size_t byteCount = 0; byteCount < text.size(); ++byteCount) {
            folder.write("a.vtu", text.substr(0, byteCount));
            const Document document = readDocument(folder / "a.vtu");
            bool isFaulty = document.malformation.has_value();
            for (const Array* array : document.arrays())
                isFaulty |= !decodeAll(document, *array).decoded.faults.empty();
            EXPECT_EQ(isFaulty, byteCount < wholeByteCount + (isRaw ? 0 : 10)) << byteCount;
        }
    }
}

TEST(Vtu, HeaderWordsClaimNoMoreThanTheFileHolds) {
    const test::TemporaryFolder folder;
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    const auto raw = vtu().piece(test::hexahedron()).appendedRaw().header64();
    for (const auto& [file, code] :
         {std::pair{test::VtuBuilder{raw}.headerWord("types", 0, most), "data-beyond-file"},
          std::pair{test::VtuBuilder{raw}.attribute("types", "offset", "18446744073709551615"), "outside-file"},
          std::pair{test::VtuBuilder{raw}.compressed().headerWord("types", 0, most), "table-beyond-file"},
          std::pair{test::VtuBuilder{raw}.compressed().headerWord("types", 3, most), "data-beyond-file"},
          std::pair{test::VtuBuilder{raw}.compressed().headerWord("types", 2, most), "implausible-size"},
          std::pair{
              test::VtuBuilder{raw}.compressed().values("types", test::numbers(80000)).headerWord("types", 1, most),
              "size-overflow"}}) {
        file.write(folder / "a.vtu");
        const Document document = readDocument(folder / "a.vtu");
        const Bytes read = decodeAll(document, named(document, "types"));
        ASSERT_EQ(read.decoded.faults.size(), 1) << code;
        EXPECT_EQ(read.decoded.faults.front().code(), code);
        EXPECT_EQ(read.bytes, "");
    }
}
