#include "tests/sdk/streams.h"
#include "loader/sdk/Base64InputStream.h"
#include "loader/sdk/BufferedInputStream.h"
#include "loader/sdk/FileInputStream.h"
#include "loader/sdk/RestrictedSectionInputStream.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/encoding.h"

#include <gtest/gtest.h>

#include <limits>

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

const std::vector<Kind> kinds{
    {"bytes", [](auto&, auto& bytes) { return byteStream(bytes); }},
    {"file", [](auto& folder, auto& bytes) { return file(folder.write("a", bytes)); }},
    {"buffered", [](auto&, auto& bytes) { return buffered(byteStream(bytes), 8); }},
    {"one byte buffered", [](auto&, auto& bytes) { return buffered(byteStream(bytes), 1); }},
    {"buffered from its middle",
     [](auto&, auto& bytes) {
         InputStreamPtr stream = byteStream("left out" + bytes);
         stream->skip(8);
         return buffered(std::move(stream), 5);
     }},
    {"section", [](auto&, auto& bytes) { return section(byteStream("before" + bytes + "after"), 6, bytes.size()); }},
    {"unlimited section",
     [](auto&, auto& bytes) {
         return section(buffered(byteStream("1" + bytes), 9), 1, std::numeric_limits<std::uint64_t>::max());
     }},
    {"base64", [](auto&, auto& bytes) { return decoded(byteStream(base64(bytes) + "\n </DataArray>")); }},
    {"section of base64 of a buffered file", [](auto& folder, auto& bytes) {
         const std::string text = "<>" + base64("12345678" + bytes + "junk") + "<";
         InputStreamPtr stream = buffered(file(folder.write("a", text)), 11);
         stream->skip(2);
         return section(decoded(std::move(stream)), 8, bytes.size());
     }}};

TEST(Streams, OfEveryKindKeepTheContractInAllSplits) {
    const TemporaryFolder folder;
    const std::string bytes = someBytes(29);
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        expectContract([&] { return kind.make(folder, bytes); }, bytes);
    }
}

TEST(ByteInputStream, ReadsItsBytesAgainAndWhatTheirOwnerMakesOfThem) {
    ByteInputStream stream(std::make_shared<ByteInputStream::Bytes>());
    stream.bytes()->assign({'a', 'b'});
    EXPECT_EQ(readOnce(stream, 2).bytes, "ab");
    stream.reset();
    EXPECT_EQ(readOnce(stream, 2).bytes, "ab");
}

} // namespace

} // namespace test
