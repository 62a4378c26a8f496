/// Streams over the bytes of a string, and what comes out of streams as a string.
#pragma once

#include "host/ByteInputStream.h"
#include "host/exceptions.h"

#include <algorithm>
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

/// Reads chunks of one size until a read fails.
template <class Stream>
Delivery readInChunks(Stream&& stream, std::size_t chunkByteCount) {
    Delivery all;
    while (all.failure.empty()) {
        const Delivery chunk = readOnce(stream, chunkByteCount);
        all = {all.bytes + chunk.bytes, chunk.failure};
    }
    return all;
}

} // namespace test
