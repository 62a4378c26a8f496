#include "streams/readValues.h"
#include "mesh/VtkCell.h"

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

StreamReader binaryReader(const std::string& bytes, bool swapBytes = false) {
    return StreamReader(byteStream(bytes), true, swapBytes);
}

/// The value as it arrives from a big-endian file.
template <class Dst, class Src>
Dst converted(Src value) {
    StreamReader reader = binaryReader(valueBytes(value, true), true);
    Dst stored{};
    reader.readValues<Dst, Src>(&stored, 1, 1, 0);
    return stored;
}

template <class Dst, class... Src>
void expectPairings() {
    for (const int value : {static_cast<int>(converted<Dst, Src>(Src{65}))...})
        EXPECT_EQ(value, 65);
}
template <class Dst>
void expectIntegerPairings() {
    expectPairings<Dst, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                   std::int64_t, std::uint64_t>();
}
template <class... Dst>
void expectAllPairings() {
    (expectIntegerPairings<Dst>(), ...);
    (expectPairings<Dst, float, double>(), ...);
}

std::vector<double> numbersOf(const std::string& text, std::size_t count) {
    StreamReader reader(byteStream(text), false, true);
    std::vector<double> values(count);
    reader.readValues<double, double>(values.data(), count, 1, 0);
    EXPECT_TRUE(reader.isTextExhausted()) << text.substr(0, 40);
    return values;
}

/// The values (from 1) before which a call asks whether to go on.
std::vector<int> pollPlaces(krohost::Host& host, std::size_t total, bool binary) {
    std::string source;
    for (std::size_t value = 0; value < total; ++value)
        source += binary ? "\1" : "1 ";
    std::vector<int> places;
    for (int poll = 1;; ++poll) {
        host.clearInterrupt();
        host.interruptAtPoll(poll);
        std::vector<std::uint8_t> values(total);
        try {
            StreamReader(byteStream(source), binary, false)
                .readValues<std::uint8_t, std::uint8_t>(values.data(), total, 1, 0);
            host.clearInterrupt();
            return places;
        } catch (const veltra::InterruptedException&) {
            places.push_back(static_cast<int>(std::ranges::count(values, 1)) + 1);
        }
    }
}

} // namespace

TEST(ReadValues, PollsBetweenValuesAtFixedPlaces) {
    krohost::Host host;
    for (const bool binary : {false, true}) {
        EXPECT_EQ(pollPlaces(host, 5, binary), (std::vector{2, 4}));
        for (const int total : {0, 1, 2, 99, 100, 199, 200, 1000, 54321}) {
            const int interval = total < 100 ? 1 : total / 100;
            std::vector<int> expected;
            for (int value = interval + 1; value <= total; value += interval + 1)
                expected.push_back(value);
            EXPECT_EQ(pollPlaces(host, static_cast<std::size_t>(total), binary), expected) << total;
        }
    }
}

TEST(ReadValues, ConvertsEveryPairingOfTypes) {
    expectAllPairings<std::uint8_t, std::int16_t, std::int32_t, float, double>();
    expectIntegerPairings<std::int64_t>();
    expectIntegerPairings<veltra::vtkfile::VtkCell::Type>();
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
    std::string bytes;
    std::string text;
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
            reader.readValues<std::int32_t, std::int16_t>(values.data(), values.size(), 3,
                                                          static_cast<short>(component));
            EXPECT_TRUE(values == expected[component & 3]) << component;
            EXPECT_TRUE(reader.isTextExhausted());
            EXPECT_THROW((reader.readValues<std::int32_t, std::int16_t>(values.data(), 1, 1, 0)),
                         veltra::ExceptionBase);
        }
}

TEST(ReadValues, KeepsWhatWasStoredBeforeAFailure) {
    const auto stored = []<class Dst>(Dst unset, const std::string& source, bool binary, bool swapBytes) {
        StreamReader reader(byteStream(source), binary, swapBytes);
        std::vector<Dst> values(4, unset);
        EXPECT_ANY_THROW((reader.readValues<Dst, std::int32_t>(values.data(), 4, 1, 0)));
        return std::vector<int>(values.begin(), values.end());
    };
    for (const bool bigEndian : {false, true}) {
        const std::string bytes =
            valueBytes(std::int32_t{1}, bigEndian) + valueBytes(std::int32_t{2}, bigEndian) + "ab";
        EXPECT_EQ(stored(std::int32_t{-1}, bytes, true, bigEndian)[1], 2);
        EXPECT_EQ(stored(double{-1}, bytes, true, bigEndian), (std::vector{1, 2, -1, -1}));
        EXPECT_EQ(stored(std::int32_t{-1}, "1 2 x 4", false, bigEndian), (std::vector{1, 2, -1, -1}));
    }
}

TEST(Text, IsSplitIntoNumbers) {
    const std::vector<std::pair<const char*, std::vector<double>>> rows{{"3 4\n5", {3, 4, 5}},
                                                                        {"7-8", {7, -8}},
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
