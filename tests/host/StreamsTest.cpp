#include "tests/host/streams.h"
#include "host/Base64InputStream.h"
#include "host/BufferedInputStream.h"
#include "host/FileInputStream.h"
#include "host/RestrictedSectionInputStream.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/encoding.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include <sys/stat.h>

namespace test {

namespace {

using namespace veltra::dataio;

InputStreamPtr file(const std::filesystem::path& path) {
    return std::make_shared<FileInputStream>(path.string());
}

InputStreamPtr buffered(InputStreamPtr inner, std::int64_t bufferByteCount) {
    return std::make_shared<BufferedInputStream>(std::move(inner), bufferByteCount);
}

InputStreamPtr section(InputStreamPtr inner, std::uint64_t skippedByteCount, std::uint64_t length) {
    inner->skip(skippedByteCount);
    return std::make_shared<RestrictedSectionInputStream>(std::move(inner), length);
}

InputStreamPtr decoded(InputStreamPtr inner) {
    return std::make_shared<Base64InputStream>(std::move(inner));
}

struct Kind {
    const char* name;
    std::function<InputStreamPtr(const TemporaryFolder& folder, const std::string& bytes)> make;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

class Stream : public testing::TestWithParam<Kind> {
protected:
    InputStreamPtr stream() const { return GetParam().make(folder, bytes); }

    TemporaryFolder folder;
    const std::string bytes = someBytes(29);
};

TEST_P(Stream, GivesTheSameBytesInAllSplits) {
    for (std::size_t chunk = 1; chunk <= bytes.size(); ++chunk) {
        const InputStreamPtr stream = this->stream();
        std::string all;
        while (stream->available() > 0) {
            EXPECT_GE(stream->available(), static_cast<std::int64_t>(bytes.size() - all.size()));
            all += readOnce(*stream, std::min(chunk, bytes.size() - all.size())).bytes;
            ASSERT_EQ(stream->position(), all.size());
        }
        EXPECT_EQ(all, bytes) << "in chunks of " << chunk;
    }
}

TEST_P(Stream, DeliversTheRestWhenReadPastItsEnd) {
    for (std::size_t start = 0; start <= bytes.size(); ++start) {
        const InputStreamPtr stream = this->stream();
        EXPECT_EQ(readOnce(*stream, start).failure, "");
        const Delivery rest = readOnce(*stream, bytes.size() - start + 3);
        EXPECT_EQ(rest.bytes, bytes.substr(start));
        EXPECT_NE(rest.failure, "");
        EXPECT_EQ(stream->available(), 0);
        EXPECT_EQ(readOnce(*stream, 1).failure, rest.failure);
    }
}

TEST_P(Stream, SkipsToItsEndAndNoFurther) {
    for (std::size_t count = 0; count < bytes.size(); ++count) {
        const InputStreamPtr stream = this->stream();
        EXPECT_EQ(readOnce(*stream, 1).bytes, bytes.substr(0, 1));
        stream->skip(count);
        EXPECT_EQ(stream->position(), count + 1);
        EXPECT_EQ(readOnce(*stream, 1).bytes, bytes.substr(count + 1, 1));
        EXPECT_THROW(stream->skip(bytes.size() - count), veltra::IOException);
        EXPECT_EQ(stream->position(), bytes.size());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Stream,
    testing::Values(
        Kind{"bytes", [](auto&, auto& bytes) { return byteStream(bytes); }},
        Kind{"file", [](auto& folder, auto& bytes) { return file(folder.write("a", bytes)); }},
        Kind{"buffered", [](auto&, auto& bytes) { return buffered(byteStream(bytes), 8); }},
        Kind{"one byte buffered", [](auto&, auto& bytes) { return buffered(byteStream(bytes), 1); }},
        Kind{"wholly buffered",
             [](auto& folder, auto& bytes) { return buffered(file(folder.write("a", bytes)), 1 << 19); }},
        Kind{"buffered from its middle",
             [](auto&, auto& bytes) {
                 InputStreamPtr stream = byteStream("left out" + bytes);
                 stream->skip(8);
                 return buffered(std::move(stream), 5);
             }},
        Kind{"section",
             [](auto&, auto& bytes) { return section(byteStream("before" + bytes + "after"), 6, bytes.size()); }},
        Kind{"unlimited section",
             [](auto&, auto& bytes) {
                 return section(buffered(byteStream("1" + bytes), 9), 1, std::numeric_limits<std::uint64_t>::max());
             }},
        Kind{"base64", [](auto&, auto& bytes) { return decoded(byteStream(base64(bytes) + "\n </DataArray>")); }},
        Kind{"padded base64",
             [](auto&, auto& bytes) {
                 const std::string text = base64(bytes.substr(0, 4)) + base64(bytes.substr(4, 2));
                 return decoded(byteStream(text + "\n" + base64(bytes.substr(6)) + " \n"));
             }},
        Kind{"section of base64 of a buffered file", [](auto& folder, auto& bytes) {
                 const std::string text = "<>" + base64("12345678" + bytes + "junk") + "<";
                 InputStreamPtr stream = buffered(file(folder.write("a", text)), 11);
                 stream->skip(2);
                 return section(decoded(std::move(stream)), 8, bytes.size());
             }}));

std::string failureOfOpening(const std::filesystem::path& path) {
    try {
        file(path);
    } catch (const veltra::IOException& exception) {
        return exception.what();
    }
    return "opened";
}

TEST(FileInputStream, RefusesWhatIsNotAFileWithTheReason) {
    const TemporaryFolder folder;
    const std::string pipe = (folder / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(failureOfOpening(folder / "none"),
              "Unable to open \"" + (folder / "none").string() + "\": No such file or directory");
    EXPECT_EQ(failureOfOpening(folder.path()), "Unable to open \"" + folder.path().string() + "\": Is a directory");
    EXPECT_EQ(failureOfOpening(pipe), "Unable to open \"" + pipe + "\": Not a regular file");
}

TEST(FileInputStream, EndsWhereTheFileHasShrunk) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.write("a", someBytes(100));
    FileInputStream stream(path.string());
    truncate(path, 60);
    const Delivery delivery = readOnce(stream, 100);
    EXPECT_EQ(delivery.bytes, someBytes(60));
    EXPECT_EQ(delivery.failure, "Unexpected end of file in \"" + path.string() + "\"");
}

TEST(BufferedInputStream, TellsOfAFailureOnlyAtItsPlace) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.write("a", someBytes(100));
    BufferedInputStream stream(file(path), 64);
    truncate(path, 50);
    EXPECT_EQ(readOnce(stream, 40).failure, "");
    EXPECT_EQ(readOnce(stream, 10).bytes, someBytes(50).substr(40));
    EXPECT_NE(readOnce(stream, 1).failure, "");
}

TEST(BufferedInputStream, ShowsWhatItHoldsWithoutConsumingIt) {
    BufferedInputStream stream(byteStream(someBytes(10)), 4);
    std::string seen;
    for (std::span<const std::uint8_t> bytes = stream.peek(); !bytes.empty(); bytes = stream.peek()) {
        EXPECT_EQ(stream.position(), seen.size());
        seen.append(bytes.begin(), bytes.end());
        stream.skip(bytes.size());
    }
    EXPECT_EQ(seen, someBytes(10));
}

TEST(RestrictedSectionInputStream, LeavesWhatIsBehindItToTheNext) {
    const InputStreamPtr stream = byteStream(someBytes(20));
    EXPECT_EQ(readInChunks(*section(stream, 0, 7), 2).bytes, someBytes(7));
    EXPECT_EQ(readOnce(*section(stream, 1, 5), 5).bytes, someBytes(20).substr(8, 5));
}

} // namespace

} // namespace test
