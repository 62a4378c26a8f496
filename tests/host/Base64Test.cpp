#include "host/base64.h"
#include "host/Base64InputStream.h"
#include "host/BufferedInputStream.h"
#include "tests/host/streams.h"
#include "tests/support/encoding.h"

#include <gtest/gtest.h>

#include <cctype>

namespace test {

namespace {

using namespace veltra::dataio;

/// The text with a blank or line break before every `length`-th character.
std::string broken(const std::string& text, std::size_t length) {
    std::string lines;
    for (std::size_t start = 0; start < text.size(); start += length)
        lines += (start % 2 == 0 ? "\r\n" : " \t") + text.substr(start, length);
    return lines;
}

struct Decoding {
    Base64Result result;
    std::string bytes;
};

/// Decodes from and to memory of just these sizes.
Decoding decode(const std::string& text, std::size_t room) {
    const std::vector<std::uint8_t> exactText(text.begin(), text.end());
    std::vector<std::uint8_t> dst(room);
    Decoding decoding{decodeBase64(exactText, dst), {}};
    decoding.bytes.assign(dst.begin(), dst.begin() + static_cast<std::ptrdiff_t>(decoding.result.bytesProduced));
    return decoding;
}

TEST(Base64, DecodesTheWholeGroupsOfTextOfEveryLengthIntoRoomOfEverySize) {
    const std::string bytes = someBytes(30);
    for (std::size_t length = 0; length <= 40; ++length)
        for (std::size_t room = 0; room <= 31; ++room) {
            const Decoding decoding = decode(base64(bytes).substr(0, length), room);
            const std::size_t groupCount = std::min(length / 4, room / 3);
            EXPECT_EQ(decoding.bytes, bytes.substr(0, groupCount * 3));
            EXPECT_EQ(decoding.result.charactersConsumed, groupCount * 4);
            EXPECT_EQ(decoding.result.stopIndex, length / 4 == groupCount ? length : groupCount * 4);
        }
}

TEST(Base64, PassesOverBlanksAnywhere) {
    const std::string bytes = someBytes(61);
    for (std::size_t length = 1; length < 20; ++length)
        EXPECT_EQ(decode(broken(base64(bytes), length), bytes.size()).bytes, bytes) << "lines of " << length;
}

TEST(Base64, StopsAtEveryCharacterThatIsNotOfTheAlphabet) {
    const std::string text = base64(someBytes(24));
    for (int code = 0; code < 256; ++code) {
        const char character = static_cast<char>(code);
        if (std::isalnum(code) || std::isspace(code) || std::string("+/=").find(character) != std::string::npos)
            continue;
        for (std::size_t place = 0; place < text.size(); ++place) {
            std::string damaged = text;
            damaged[place] = character;
            const Decoding decoding = decode(damaged, 24);
            ASSERT_EQ(decoding.bytes, someBytes(place / 4 * 3));
            ASSERT_EQ(decoding.result.stopIndex, place);
        }
    }
}

struct Row {
    const char* text;
    const char* bytes;
    const char* failure; ///< of a read beyond the bytes
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.text;
}

class Base64Text : public testing::TestWithParam<Row> {};

TEST_P(Base64Text, YieldsItsBytesAndThenTellsWhyItStops) {
    const Row& row = GetParam();
    for (const std::size_t chunk : {1U, 2U, 3U, 4U, 7U, 100U})
        for (const std::int64_t block : {1, 3, 100}) {
            Base64InputStream stream(std::make_shared<BufferedInputStream>(byteStream(row.text), block));
            const Delivery delivery = readInChunks(stream, chunk);
            EXPECT_EQ(delivery.bytes, row.bytes);
            EXPECT_EQ(delivery.failure, row.failure);
        }
}

constexpr const char* endOfText = "Unexpected end of base64 text";
constexpr const char* endOfGroup = "Base64 text ends in the middle of a group of four characters";

#define EXPECTED_INSTEAD " in base64 text where a letter, digit, \"+\", \"/\" or padding with \"=\" is expected"

INSTANTIATE_TEST_SUITE_P(
    Rows, Base64Text,
    testing::Values(Row{"", "", endOfText}, Row{" \n", "", endOfText}, Row{"</DataArray>", "", endOfText},
                    Row{"Zm9vYmFy", "foobar", endOfText}, Row{"Zg==Zm8=Zm9v", "ffofoo", endOfText},
                    Row{"\n Z g\n=\t= \n Zm9v ", "ffoo", endOfText}, Row{"Zm8= \n<Zm9v", "fo", endOfText},
                    Row{"Z", "", endOfGroup}, Row{"Zm9vZm", "foo", endOfGroup}, Row{"Zm9vZ\n<", "foo", endOfGroup},
                    Row{"Zm9vZg=", "foo", endOfGroup}, Row{"Zm9v!m9v", "foo", "Found \"!\"" EXPECTED_INSTEAD},
                    Row{"Zm9vZm9\a", "foo", "Found byte 0x07" EXPECTED_INSTEAD},
                    Row{"Zm9v====", "foo", "Found \"=\"" EXPECTED_INSTEAD},
                    Row{"Zm9vZ===", "foo", "Found \"=\"" EXPECTED_INSTEAD},
                    Row{"Zm9vZg=v", "foo", "Found \"v\"" EXPECTED_INSTEAD}));

TEST(Base64InputStream, KeepsQuietAboutWhatNobodyAsksFor) {
    Base64InputStream stream(byteStream("Zm9v!"));
    EXPECT_EQ(readOnce(stream, 3).failure, "");
    EXPECT_GT(stream.available(), 0);
    EXPECT_EQ(readOnce(stream, 0).failure, "");
}

TEST(Base64InputStream, ReadsTextOfManyBlocks) {
    const std::string bytes = someBytes(300'000);
    const std::string text = base64(bytes.substr(0, 100)) + std::string(200'000, ' ') +
                             broken(base64(bytes.substr(100)), 77) + std::string(200'000, '\n') + "<";
    for (const std::size_t chunk : {4U, 1000U, 70'000U, 299'999U}) {
        Base64InputStream stream(byteStream(text));
        std::string all;
        while (stream.available() > 0)
            all += readOnce(stream, std::min(chunk, bytes.size() - all.size())).bytes;
        EXPECT_EQ(all, bytes) << "in chunks of " << chunk;
    }
}

TEST(Base64InputStream, BoundsWhatFollowsByTheTextThatFollows) {
    Base64InputStream stream(byteStream(base64(someBytes(30'000))));
    for (const std::size_t byteCount : {0U, 1U, 1U, 4U, 10'000U, 19'990U}) {
        EXPECT_EQ(readOnce(stream, byteCount).failure, "");
        EXPECT_EQ(stream.available(), 30'000 - static_cast<std::int64_t>(stream.position()));
    }
}

} // namespace

} // namespace test
