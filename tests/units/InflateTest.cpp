#include "loader/streams/InterleavedInflater.h"

#include "tests/support/deflate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

namespace test {

namespace {

using veltra::vtkfile::InterleavedInflater;
using Data = std::vector<std::uint8_t>;

/// Inflates the streams to so many bytes each and returns those that it says are done. There is the slack it asks for
/// and no byte more; behind each stream are the bytes `behind`, as far as they fit.
std::vector<Data> inflated(InterleavedInflater& inflater, std::vector<Data> streams, std::size_t byteCount,
                           const Data& behind = {}) {
    std::vector<Data> rooms(streams.size(), Data(byteCount + InterleavedInflater::writeSlack));
    std::vector<InterleavedInflater::Stream> jobs;
    for (std::size_t index = 0; index < streams.size(); ++index) {
        const std::size_t size = streams[index].size();
        streams[index].insert(streams[index].end(), behind.begin(), behind.end());
        streams[index].resize(size + InterleavedInflater::readSlack, 0xA5);
        jobs.push_back({std::span(streams[index]).first(size), std::span(rooms[index]).first(byteCount)});
    }
    rooms.resize(inflater.inflate(jobs));
    for (Data& room : rooms)
        room.resize(byteCount);
    return rooms;
}

Data smoothFloats(std::size_t byteCount) {
    Data bytes(byteCount);
    for (std::size_t index = 0; index < byteCount / sizeof(float); ++index) {
        const auto value = static_cast<float>(std::sin(static_cast<double>(index) * 0.01) * 300);
        std::memcpy(&bytes[index * sizeof value], &value, sizeof value);
    }
    return bytes;
}

/// Bytes each half as frequent as the one before, whose codes are as long as codes get, and some that repeat what
/// is from one to a few hundred bytes before.
Data skewedBytes(std::size_t byteCount) {
    std::mt19937 random(7);
    Data bytes;
    while (bytes.size() < byteCount) {
        if (const std::size_t distance = 1 + random() % 9 * (random() % 40 + 1);
            distance <= bytes.size() && random() % 16 == 0) {
            for (std::size_t count = 3 + random() % (random() % 8 == 0 ? 300 : 20); count > 0; --count)
                bytes.push_back(bytes[bytes.size() - distance]);
        } else {
            bytes.push_back(static_cast<std::uint8_t>(std::countl_zero(random() | 1u) * 8 + random() % 8));
        }
    }
    bytes.resize(byteCount);
    return bytes;
}

/// Bytes of 32 values with few matches, and runs of bytes so rare that their codes are as long as a table's.
Data rareBytes(std::size_t byteCount) {
    std::mt19937 random(7);
    Data bytes;
    while (bytes.size() < byteCount) {
        const std::size_t distance = 1 + random() % 5000;
        if (random() % 100 == 0)
            std::generate_n(std::back_inserter(bytes), 29, [&] { return static_cast<std::uint8_t>(random()); });
        else if (distance <= bytes.size() && random() % 54 == 0)
            for (std::size_t count = 3 + random() % 8; count > 0; --count)
                bytes.push_back(bytes[bytes.size() - distance]);
        else
            bytes.push_back(static_cast<std::uint8_t>(random() % 32));
    }
    bytes.resize(byteCount);
    return bytes;
}

Data zeros(std::size_t byteCount) {
    return Data(byteCount);
}

} // namespace

class InterleavedInflation : public testing::Test {
protected:
    void SetUp() override {
        if (!InterleavedInflater::isSupported())
            GTEST_SKIP() << "this processor inflates one block after the other";
    }

    InterleavedInflater inflater_;
};

TEST_F(InterleavedInflation, GivesWhatWasDeflated) {
    for (const auto make : {smoothFloats, skewedBytes, rareBytes, zeros})
        for (const std::size_t byteCount : {1000, 32768, 100'000})
            for (const int level : {0, 1, 6, 9})
                for (const int strategy : {Z_DEFAULT_STRATEGY, Z_HUFFMAN_ONLY, Z_FIXED}) {
                    const Data bytes = make(byteCount);
                    const Data stream = deflated(bytes, level, strategy);
                    for (std::size_t count = 1; count <= InterleavedInflater::laneCount; ++count)
                        EXPECT_TRUE(inflated(inflater_, std::vector(count, stream), byteCount) ==
                                    std::vector(count, bytes))
                            << byteCount << " bytes, level " << level << ", strategy " << strategy;
                }
}

TEST_F(InterleavedInflation, LanesEndAtDifferentTimes) {
    const std::vector<Data> contents{smoothFloats(40'000), skewedBytes(40'000), skewedBytes(40'000)};
    const std::vector<Data> streams{deflated(contents[0], 6), deflated(contents[1], 1),
                                    deflated(contents[2], 9, Z_HUFFMAN_ONLY)};
    EXPECT_TRUE(inflated(inflater_, streams, 40'000) == contents);
}

TEST_F(InterleavedInflation, LeavesToOthersWhatIsNotCommon) {
    const Data floats = smoothFloats(5000);
    const Data common = deflated(floats, 6);
    Data otherWindow = common, dictionary = common;
    otherWindow[0] = 0x68;
    otherWindow[1] = 0x81;
    dictionary[1] = 0xBB;
    Data numbers(5000); // most of which repeat
    for (std::size_t index = 0; index < numbers.size(); index += 8)
        numbers[index] = static_cast<std::uint8_t>(index / 8 * 7 % 31);
    const Data unusedLength{0x78, 0x9C, 0x1B, 0x03, 0, 0};
    const Data unusedDistance{0x78, 0x9C, 0x63, 0x00, 0x3E, 0};
    const Data tooManyLengths{0x78, 0x9C, 0xED, 0xFD, 0x81, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFC, 0xFF, 0xFF, 0x03};
    for (const Data& uncommon :
         {deflated(numbers, 6), otherWindow, dictionary, unusedLength, unusedDistance, tooManyLengths, Data{},
          Data(common.begin(), common.begin() + 3), deflated(smoothFloats(4999), 6), deflated(smoothFloats(5001), 6),
          deflated(smoothFloats(6000), 0), deflated(zeros(90'000), 6)}) {
        EXPECT_EQ(inflated(inflater_, {uncommon, common}, 5000).size(), 0u) << uncommon.size();
        EXPECT_TRUE(inflated(inflater_, {common, uncommon, uncommon, common}, 5000) == std::vector<Data>{floats});
    }
}

TEST_F(InterleavedInflation, LeavesToOthersWhatHasManyEmptyBlocks) {
    const Data floats = smoothFloats(5000);
    for (const int blockCount : {60, 68}) {
        const Data emptyBlocks{0x02, 0x08, 0x20, 0x80, 0x00}; // four of them, of fixed codes
        const Data storedHeader{0x01, 0x88, 0x13, 0x77, 0xEC};
        Data stream{0x78, 0x9C};
        for (int block = 0; block < blockCount; block += 4)
            stream.insert(stream.end(), emptyBlocks.begin(), emptyBlocks.end());
        stream.insert(stream.end(), storedHeader.begin(), storedHeader.end());
        stream.insert(stream.end(), floats.begin(), floats.end());
        EXPECT_TRUE(inflatedByZlib(stream, 5000) == floats);
        EXPECT_EQ(inflated(inflater_, {stream}, 5000).size(), blockCount == 60 ? 1u : 0u);
    }
}

TEST_F(InterleavedInflation, IsDoneOnlyWithWhatZlibGives) {
    const Data bytes = skewedBytes(1500);
    for (const Data& sound : {deflated(bytes, 6), deflated(bytes, 6, Z_FIXED), deflated(bytes, 0)}) {
        std::size_t doneCount = 0;
        const auto expectAgreement = [&](const Data& damaged, const Data& behind = {}) {
            const std::vector<Data> done = inflated(inflater_, {sound, damaged, sound}, bytes.size(), behind);
            ASSERT_GE(done.size(), 1u);
            EXPECT_TRUE(done[0] == bytes);
            if (done.size() == 1)
                return;
            ++doneCount;
            EXPECT_TRUE(done[1] == inflatedByZlib(damaged, bytes.size() + 1));
            EXPECT_EQ(done.size(), 3u);
        };
        for (auto place = sound.begin(); place != sound.end(); ++place) {
            expectAgreement(Data(sound.begin(), place), Data(place, std::min(place + 32, sound.end())));
            for (int bit = 0; bit < 8; ++bit) {
                Data damaged = sound;
                damaged[static_cast<std::size_t>(place - sound.begin())] ^= static_cast<std::uint8_t>(1u << bit);
                expectAgreement(damaged);
            }
        }
        EXPECT_GT(doneCount, 4 * 8u); // where only the checksum is wrong, and more
    }
}

} // namespace test
