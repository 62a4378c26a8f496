#include "streams/readValues.h"
#include "streams/VtkZLibDataInputStream.h"

#include "host/Base64InputStream.h"
#include "krohost/Host.h"
#include "tests/host/streams.h"
#include "tests/support/encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace test {

namespace {

using veltra::vtkfile::StreamReader;

/// The value as it arrives from a big-endian file.
template <class Dst, class Src>
Dst converted(Src value) {
    StreamReader reader(byteStream(valueBytes(value, true)), true, true);
    Dst stored{};
    reader.readValues<Dst, Src>(&stored, 1, 1, 0);
    return stored;
}

std::vector<double> numbersOf(const std::string& text, std::size_t count) {
    StreamReader reader(byteStream(text), false, true);
    std::vector<double> values(count);
    reader.readValues<double, double>(values.data(), count, 1, 0);
    EXPECT_TRUE(reader.isTextExhausted()) << text.substr(0, 40);
    return values;
}

} // namespace

TEST(DataStreams, OfCompressedBlocksKeepTheContractInAllSplits) {
    const std::string bytes = someBytes(29);
    const Array array = integers("a", ElementType::UInt8, {bytes.begin(), bytes.end()});
    for (const std::size_t blockByteCount : {1, 5, 29, 100}) {
        const std::string stored = encodedArray(array, {Format::AppendedRaw, true, false, false, blockByteCount});
        expectContract(
            [&]() -> veltra::dataio::InputStreamPtr {
                veltra::vtkfile::DataArray record;
                record.type = veltra::vtkfile::DataArrayType::UInt8;
                record.format = veltra::vtkfile::DataArrayFormat::Appended;
                record.headerSize = 4;
                std::uint64_t valueCount = 0;
                return std::make_shared<veltra::vtkfile::VtkZLibDataInputStream>(byteStream(stored), record,
                                                                                 valueCount);
            },
            bytes);
    }
}

TEST(DataStreams, OfCompressedBlocksGiveNothingBehindTextThatBreaksOff) {
    const std::string bytes = someBytes(100);
    const Array array = integers("a", ElementType::UInt8, {bytes.begin(), bytes.end()});
    const std::string text = encodedArray(array, {Format::AppendedBase64, true, false, false, 8});
    veltra::vtkfile::DataArray record;
    record.headerSize = 4;
    const std::size_t tableByteCount = 88; // three words and one for each of 13 blocks, with padding
    for (std::size_t place = tableByteCount; place < text.size(); ++place)
        for (const std::size_t chunk : {1, 8, 11, 100}) {
            std::string broken = text;
            broken[place] = '*';
            std::uint64_t valueCount = 0;
            veltra::vtkfile::VtkZLibDataInputStream stream(
                std::make_shared<veltra::dataio::Base64InputStream>(byteStream(broken)), record, valueCount);
            const Delivery all = readInChunks(stream, chunk);
            EXPECT_TRUE(bytes.starts_with(all.bytes)) << place;
            EXPECT_LT(all.bytes.size(), bytes.size()) << place;
            EXPECT_EQ(readOnce(stream, 100), (Delivery{"", all.failure})) << place;
        }
}

TEST(ReadValues, PollsBetweenValuesAtFixedPlaces) {
    krohost::Host host;
    for (const bool binary : {false, true})
        for (const std::size_t total : {0, 1, 2, 5, 99, 100, 199, 200, 1000, 54321, 450000}) {
            std::string source;
            for (std::size_t value = 0; value < total; ++value)
                source += binary ? "\1" : "1 ";
            const std::size_t step = total < 100 ? 2 : total / 100 + 1;
            for (std::size_t poll = 1; (poll - 1) * step <= total; ++poll) { // the last is not come to
                host.interruptAtPoll(static_cast<std::int64_t>(poll));
                std::vector<std::uint8_t> values(total);
                bool isInterrupted = false;
                try {
                    StreamReader reader(byteStream(source), binary, false);
                    reader.readValues<std::uint8_t, std::uint8_t>(values.data(), total, 1, 0);
                } catch (const veltra::InterruptedException&) {
                    isInterrupted = true;
                }
                host.clearInterrupt();
                EXPECT_EQ(isInterrupted, poll * step <= total) << total;
                EXPECT_EQ(std::ranges::count(values, 1), std::min(poll * step - 1, total)) << total;
            }
        }
}

TEST(ReadValues, ConvertsWithoutRoundingAndWithoutRangeCheck) {
    EXPECT_EQ((converted<std::int16_t>(70000.7)), 4464);
    EXPECT_EQ((converted<std::int32_t>(-1.9)), -1);
    EXPECT_EQ((converted<std::uint8_t>(-1.9F)), 255);
    EXPECT_EQ((converted<std::int32_t>((std::uint64_t{1} << 63) + 5)), 5);
    EXPECT_EQ((converted<std::int32_t>(std::numeric_limits<std::uint32_t>::max())), -1);
    EXPECT_EQ((converted<std::int32_t>(std::nan(""))), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ((converted<std::int32_t>(1e300)), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ((converted<float>((std::int64_t{1} << 24) + 1)), 16777216.0F);
    EXPECT_TRUE(std::isinf(converted<float>(1e300)));
    EXPECT_TRUE(std::isnan(converted<double>(std::nanf(""))));
}

TEST(ReadValues, TakesOneComponentOfEveryTuple) {
    std::string bytes, text;
    std::vector<int> expected[4];
    for (std::int16_t value = 0; value < 30000; ++value) {
        bytes += valueBytes(value, true);
        text += std::to_string(value) + (value % 7 == 0 ? "\n" : " ");
        expected[value % 3].push_back(value);
    }
    expected[3].assign(10000, -1); // no such component
    for (const bool binary : {false, true})
        for (const int component : {0, 1, 2, 3, -1}) {
            StreamReader reader(byteStream(binary ? bytes : text), binary, true);
            std::vector<int> values(10000, -1);
            const auto read = [&] {
                reader.readValues<int, std::int16_t>(values.data(), values.size(), 3, static_cast<short>(component));
            };
            read();
            EXPECT_TRUE(values == expected[component & 3]) << component;
            EXPECT_TRUE(reader.isTextExhausted());
            EXPECT_THROW(read(), veltra::ExceptionBase);
        }
}

TEST(ReadValues, KeepsWhatWasStoredBeforeAFailure) {
    for (const bool bigEndian : {false, true}) {
        const auto stored = [&]<class Dst>(Dst unset, const std::string& source, bool binary) {
            StreamReader reader(byteStream(source), binary, bigEndian);
            std::vector<Dst> values(4, unset);
            EXPECT_ANY_THROW((reader.readValues<Dst, std::int32_t>(values.data(), 4, 1, 0)));
            return std::vector<int>(values.begin(), values.end());
        };
        const std::string bytes = valueBytes(1, bigEndian) + valueBytes(2, bigEndian) + "ab";
        EXPECT_EQ(stored(-1, bytes, true)[1], 2);
        EXPECT_EQ(stored(-1.0, bytes, true), (std::vector{1, 2, -1, -1}));
        EXPECT_EQ(stored(-1, "1 2 x 4", false), (std::vector{1, 2, -1, -1}));
    }
}

TEST(ReadValues, OfLongArraysGoStraightToTheirPlace) {
    constexpr std::int32_t count = 150'000, arrivedCount = 123'456;
    for (const bool bigEndian : {false, true}) {
        std::string bytes;
        std::vector<std::int32_t> expected(count);
        for (std::int32_t& value : expected)
            bytes += valueBytes(value = static_cast<std::int32_t>(bytes.size() * 2654435761), bigEndian);
        std::vector<std::int32_t> values(count, -1);
        StreamReader reader(byteStream(bytes), true, bigEndian);
        reader.readValues<std::int32_t, std::int32_t>(values.data(), count, 1, 0);
        EXPECT_TRUE(values == expected);
        std::ranges::fill(values, -1);
        std::fill(expected.begin() + arrivedCount, expected.end(), -1);
        StreamReader cut(byteStream(bytes.substr(0, 4 * arrivedCount)), true, bigEndian);
        EXPECT_THROW((cut.readValues<std::int32_t, std::int32_t>(values.data(), count, 1, 0)), veltra::IOException);
        EXPECT_TRUE(values == expected);
    }
}

TEST(Text, IsSplitIntoNumbers) {
    const std::vector<std::pair<const char*, std::vector<double>>> rows{{"3 4\n5", {3, 4, 5}},
                                                                        {"7-8", {7, -8}},
                                                                        {"10-09-1", {10, -9, -1}},
                                                                        {"-7-8-9", {-7, -8, -9}},
                                                                        {"1.5e-3", {0.0015}},
                                                                        {"1.5e-3-2", {0.0015, -2}},
                                                                        {" \t\v\f\r+3 .5\n\n", {3, 0.5}},
                                                                        {"1e5 -0 1e-400", {1e5, 0, 0}},
                                                                        {"inf -INF", {INFINITY, -INFINITY}},
                                                                        {"", {}}};
    for (const auto& [text, values] : rows)
        EXPECT_EQ(numbersOf(text, values.size()), values) << text;
    for (const char* text : {"", " ", "1,5", "--1", "1e", "0x10", "1.5.2", "- 1"})
        EXPECT_THROW(numbersOf(text, 1), veltra::bad_lexical_cast) << text;
    EXPECT_THROW(numbersOf("1e400", 1), veltra::bad_numeric_cast);
}

TEST(Text, MayCutANumberAtTheBuffersEdge) {
    for (std::size_t blankCount = 0x10000 - 20; blankCount < 0x10000 + 2; ++blankCount)
        for (const std::string& rest : {std::string(), std::string(0x10001, ' ')})
            EXPECT_EQ(numbersOf(std::string(blankCount, ' ') + "12345.5-7e-1 8" + rest, 3),
                      (std::vector{12345.5, -0.7, 8.0}));
    EXPECT_THROW(numbersOf(std::string(0x20000, '1'), 1), veltra::ExceptionBase);
}

} // namespace test
