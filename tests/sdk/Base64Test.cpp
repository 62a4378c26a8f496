#include "loader/sdk/base64.h"
#include "loader/sdk/Base64InputStream.h"
#include "tests/sdk/streams.h"
#include "tests/support/encoding.h"

#include <gtest/gtest.h>

namespace test {

namespace {

using namespace veltra::dataio;

/// The bytes and where decoding stopped, from and to memory of just these sizes, or with more after it.
std::pair<std::string, std::size_t> decode(const std::string& text, std::size_t room) {
    std::pair<std::string, std::size_t> decoded;
    for (const std::size_t more : {16, 0}) {
        const std::string source = text + std::string(more, 'A');
        const std::vector<std::uint8_t> exactText(source.begin(), source.end());
        std::vector<std::uint8_t> dst(room + more, '*');
        const Base64Result result = decodeBase64(std::span(exactText).first(text.size()), std::span(dst).first(room));
        EXPECT_EQ(std::string(dst.begin() + static_cast<std::ptrdiff_t>(room), dst.end()), std::string(more, '*'));
        const std::string bytes(dst.begin(), dst.begin() + static_cast<std::ptrdiff_t>(result.bytesProduced));
        EXPECT_TRUE(more > 0 || decoded == std::pair(bytes, result.stopIndex));
        decoded = {bytes, result.stopIndex};
    }
    return decoded;
}

TEST(Base64, DecodesTheWholeGroupsOfTextOfEveryLengthIntoRoomOfEverySize) {
    const std::string bytes = someBytes(78); // three blocks and more, and too short for one at the smaller sizes
    for (std::size_t length = 0; length <= 104; ++length)
        for (std::size_t room = 0; room <= 79; ++room) {
            const std::size_t groupCount = std::min(length / 4, room / 3);
            EXPECT_EQ(decode(base64(bytes).substr(0, length), room),
                      std::pair(bytes.substr(0, groupCount * 3), length / 4 == groupCount ? length : groupCount * 4));
        }
}

TEST(Base64, IsTheSameInBlocksAndInGroups) {
    std::string alphabet;
    for (int first = 0; first < 256; ++first) // every character in every place of a block
        alphabet += base64(someBytes(256)) + base64(std::string(static_cast<std::size_t>(first), '\xFF'));
    const std::string text = alphabet.substr(0, alphabet.find('='));
    std::string inGroups;
    for (std::size_t begin = 0; begin < text.size(); begin += 28) // less than a block
        inGroups += decode(text.substr(begin, 28), 21).first;
    EXPECT_EQ(decode(text, inGroups.size() + 8).first, inGroups);
}

TEST(Base64, StopsAtEveryCharacterThatIsNotOfTheAlphabet) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n\v\f";
    for (int code = 0; code < 256; ++code)
        for (std::size_t place = 0; alphabet.find(static_cast<char>(code)) == alphabet.npos && place < 80; ++place)
            EXPECT_EQ(decode(base64(someBytes(60)).replace(place, 1, 1, static_cast<char>(code)), 60),
                      std::pair(someBytes(place / 4 * 3), place));
}

TEST(Base64InputStream, ReadsTextOfManyBlocksAndBoundsWhatFollows) {
    const std::string bytes = someBytes(300'000);
    std::string text = base64(bytes.substr(0, 100)) + std::string(200'000, ' ');
    for (std::size_t start = 100; start < bytes.size(); start += 57)
        text += base64(bytes.substr(start, 57)) + (start % 2 == 0 ? "\r\n" : " \t");
    for (const std::size_t chunk : {4U, 1000U, 70'000U, 299'999U}) {
        Base64InputStream stream(byteStream(text + std::string(200'000, '\n') + "<"));
        std::string all;
        while (stream.available() > 0) {
            EXPECT_GE(stream.available(), std::ssize(bytes) - std::ssize(all));
            all += readOnce(stream, std::min(chunk, bytes.size() - all.size())).bytes;
        }
        EXPECT_EQ(all, bytes) << "in chunks of " << chunk;
    }
}

} // namespace

} // namespace test
