#include "krohost/vtu/decode.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

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
