#include "krohost/reader/decode.h"
#include "loader/sdk/ByteInputStream.h"
#include "loader/streams/AsciiTokenizer.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace krohost::reader;
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

/// What the loader reads in a text, as bytes; nothing when one of its words is no number.
template <class Number>
std::optional<std::string> loaded(const std::string& text) {
    veltra::dataio::ByteInputStream stream(std::make_shared<std::vector<std::uint8_t>>(text.begin(), text.end()));
    veltra::vtkfile::AsciiTokenizer tokens(stream);
    std::string bytes;
    try {
        while (!tokens.atEnd())
            bytes += test::valueBytes(tokens.next<Number>(), false);
        return bytes;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

TEST(Reader, TakesForANumberWhatTheLoaderTakes) {
    std::istringstream words{"5 +5 -5 +-5 -+5 ++5 + - -0 -00 -0x 0x10 007 1.5 1. .5 1e3 1e 1e400 -1e400 1e-400 -1e-400 "
                             "1e39 -1e-60 1e-45 nan NAN(x) nan( -inf infinity infi 7-8 1- 300 -129 4294967296 1e-3-2 "
                             "8.5.5 \xC2\xB2 1,5 0.1 1.00000017881393432617187499 18446744073709551616 " +
                             std::string(1000, '0') + "7"};
    const test::TemporaryFolder folder;
    for (std::string word; words >> word;)
        for (int type = 0; type < 10; ++type)
            test::asElement(static_cast<test::ElementType>(type), [&](auto zero) {
                const test::Array array = integers("a", static_cast<test::ElementType>(type), {});
                const std::string text = word + " 3 ";
                vtu().piece(test::hexahedron().withPointData(array)).inlineText("a", text).write(folder / "a.vtu");
                const Document document = readDocument(folder / "a.vtu");
                const Bytes own = decodeAll(document, named(document, "a"));
                const std::optional<std::string> bytes = loaded<decltype(zero)>(text);
                EXPECT_EQ(own.decoded.faults.empty(), bytes.has_value()) << word << " as type " << type;
                if (bytes) {
                    EXPECT_EQ(own.bytes, *bytes) << word << " as type " << type;
                }
            });
    const std::string tooLong = std::string(65536, '0') + "7 3";
    vtu().piece(test::hexahedron()).inlineText("Points", tooLong).write(folder / "a.vtu");
    const Document document = readDocument(folder / "a.vtu");
    EXPECT_EQ(decodeAll(document, named(document, "Points")).bytes, "");
}

TEST(Reader, AsksWhetherToStopForWhatAFewBytesInflateTo) {
    const test::TemporaryFolder folder;
    const test::Array zeros = integers("a", test::ElementType::Int64, std::vector<std::int64_t>(400000));
    vtu().piece(test::hexahedron().withPointData(zeros)).appendedRaw().compressed(1 << 22).write(folder / "a.vtu");
    const Document document = readDocument(folder / "a.vtu");
    int pollCount = 0;
    const Decoded decoded = decode(
        document, named(document, "a"), [](auto) {}, [&] { ++pollCount; });
    EXPECT_EQ(decoded.byteCount, 3200000);
    EXPECT_GE(pollCount, 3200000 >> 16);
}

TEST(Reader, EveryPrefixOfAFileIsReadOrFaulty) {
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
