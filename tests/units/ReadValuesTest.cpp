#include "loader/streams/readValues.h"

#include "krohost/host/runtime/Host.h"
#include "tests/sdk/streams.h"
#include "tests/support/encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace test {

namespace {

using veltra::vtkfile::StreamReader;

std::vector<double> numbersOf(const std::string& text, std::size_t count) {
    StreamReader reader(byteStream(text), false, true);
    std::vector<double> values(count);
    reader.readValues<double, double>(values.data(), count, 1, 0);
    EXPECT_TRUE(reader.isTextExhausted()) << text.substr(0, 40);
    return values;
}

} // namespace

TEST(ReadValues, PollsBetweenValuesAtFixedPlaces) {
    krohost::Host host;
    for (const bool binary : {false, true})
        for (const std::size_t total : {0, 1, 2, 5, 99, 100, 199, 200, 1000, 54321, 450000}) {
            std::string source;
            for (std::size_t value = 0; value < total; ++value)
                source += binary ? "\1" : "1 ";
            const std::size_t step = total < 100 ? 2 : total / 100 + 1;
            for (std::size_t poll = 1; (poll - 1) * step <= total; ++poll) { // the last is not come to
                host.injection().interruptAtPoll(static_cast<std::int64_t>(poll));
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

TEST(ReadValues, KeepsWhatWasStoredBeforeAFailure) {
    for (const bool bigEndian : {false, true}) {
        const auto stored = [&]<class Dst>(Dst unset, const std::string& source, bool binary) {
            StreamReader reader(byteStream(source), binary, bigEndian);
            std::vector<Dst> values(150'000, unset); // enough for integers to go straight to their place
            EXPECT_ANY_THROW((reader.readValues<Dst, std::int32_t>(values.data(), values.size(), 1, 0)));
            return std::vector<int>(values.begin(), values.begin() + 4);
        };
        const std::string bytes = valueBytes(1, bigEndian) + valueBytes(2, bigEndian) + "ab";
        EXPECT_EQ(stored(-1, bytes, true)[1], 2);
        EXPECT_EQ(stored(-1.0, bytes, true), (std::vector{1, 2, -1, -1}));
        EXPECT_EQ(stored(-1, "1 2 x 4", false), (std::vector{1, 2, -1, -1}));
    }
}

TEST(ReadValues, RoundsToTheNearestFloatWhichMayBeInfinity) {
    constexpr double largest = std::numeric_limits<float>::max(), infinity = std::numeric_limits<double>::infinity();
    for (const auto& [value, nearest] : {std::pair{1e39, infinity},
                                         {1.7e308, infinity},
                                         {infinity, infinity},
                                         {0x1.ffffffp127, infinity},
                                         {0x1.fffffefffffffp127, largest},
                                         {largest, largest},
                                         {1e-50, 0.0},
                                         {0.1, double{0.1F}}})
        for (const double sign : {1.0, -1.0})
            EXPECT_EQ(veltra::vtkfile::convertValue<float>(sign * value), sign * nearest) << value;
    EXPECT_TRUE(std::isnan(veltra::vtkfile::convertValue<float>(std::numeric_limits<double>::quiet_NaN())));
}

TEST(Text, MayCutANumberAtTheBuffersEdge) {
    for (std::size_t blankCount = 0x10000 - 20; blankCount < 0x10000 + 2; ++blankCount)
        for (const std::string& rest : {std::string(), std::string(0x10001, ' ')})
            EXPECT_EQ(numbersOf(std::string(blankCount, ' ') + "12345.5-7e-1 8" + rest, 3),
                      (std::vector{12345.5, -0.7, 8.0}));
    for (const std::string& text : {std::string(), std::string(0x20000, '1')})
        EXPECT_THROW(numbersOf(text, 1), veltra::ExceptionBase);
}

} // namespace test
