/// Streams over the bytes of a string, and what comes out of streams as a string.
#pragma once

#include "loader/sdk/ByteInputStream.h"
#include "loader/sdk/exceptions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test {

inline veltra::dataio::InputStreamPtr byteStream(std::string_view bytes) {
    using veltra::dataio::ByteInputStream;
    return std::make_shared<ByteInputStream>(std::make_shared<ByteInputStream::Bytes>(bytes.begin(), bytes.end()));
}

/// Bytes whose neighbours differ, so that one left out or read twice shows.
inline std::string someBytes(std::size_t byteCount) {
    std::string bytes(byteCount, '\0');
    for (std::size_t index = 0; index < byteCount; ++index)
        bytes[index] = static_cast<char>(index * 7 + index / 256 * 3);
    return bytes;
}

/// What one read delivers, from a buffer of just that size, and its failure.
struct Delivery {
    std::string bytes;
    std::string failure;
    bool operator==(const Delivery&) const = default;
};

template <class Stream>
Delivery readOnce(Stream&& stream, std::size_t byteCount) {
    const std::uint64_t start = stream.position();
    std::vector<std::uint8_t> buffer(byteCount);
    Delivery delivery;
    try {
        stream.read(buffer.data(), byteCount);
    } catch (const veltra::IOException& exception) {
        delivery.failure = exception.what();
    }
    const auto deliveredCount = static_cast<std::ptrdiff_t>(stream.position() - start);
    delivery.bytes.assign(buffer.begin(), buffer.begin() + deliveredCount);
    return delivery;
}

/// What a stream shows of its next bytes, passed over after the look.
inline std::string peekAndSkip(veltra::dataio::InputStreamInterface& stream, std::size_t largest) {
    const auto shown = stream.peek();
    const auto bytes = shown.first(std::min(largest, shown.size()));
    const std::string copy(bytes.begin(), bytes.end());
    stream.skip(copy.size());
    return copy;
}

/// `make` gives a new stream of the bytes every time.
inline void expectContract(const std::function<veltra::dataio::InputStreamPtr()>& make, const std::string& bytes) {
    for (std::size_t chunk = 1; chunk <= bytes.size(); ++chunk) {
        const veltra::dataio::InputStreamPtr stream = make();
        std::string all;
        while (stream->available() > 0) {
            EXPECT_GE(stream->available(), std::ssize(bytes) - std::ssize(all));
            all += peekAndSkip(*stream, chunk);
            all += readOnce(*stream, std::min(chunk, bytes.size() - all.size())).bytes;
            ASSERT_EQ(stream->position(), all.size());
        }
        EXPECT_EQ(all, bytes) << "in chunks of " << chunk;
    }
    for (std::size_t start = 0; start <= bytes.size(); ++start) {
        const veltra::dataio::InputStreamPtr stream = make();
        EXPECT_EQ(readOnce(*stream, start).failure, "");
        const Delivery rest = readOnce(*stream, bytes.size() - start + 3);
        EXPECT_EQ(rest.bytes, bytes.substr(start)) << "read past the end";
        EXPECT_NE(rest.failure, "");
        EXPECT_EQ(stream->available(), 0);
        EXPECT_EQ(readOnce(*stream, 1).failure, rest.failure);
    }
    for (std::size_t count = 0; count < bytes.size(); ++count) {
        const veltra::dataio::InputStreamPtr stream = make();
        EXPECT_EQ(readOnce(*stream, 1).bytes, bytes.substr(0, 1));
        stream->skip(count);
        EXPECT_EQ(stream->position(), count + 1);
        EXPECT_EQ(readOnce(*stream, 1).bytes, bytes.substr(count + 1, 1));
        EXPECT_THROW(stream->skip(bytes.size() - count), veltra::IOException);
        EXPECT_EQ(stream->position(), bytes.size());
    }
    const veltra::dataio::InputStreamPtr closed = make();
    EXPECT_EQ(readOnce(*closed, 1).failure, "");
    closed->close();
    EXPECT_EQ(closed->available(), 0);
    EXPECT_NE(readOnce(*closed, 1).failure, "");
}

} // namespace test
