#include "tests/support/deflate.h"

#include <stdexcept>

namespace test {

std::vector<std::uint8_t> deflated(std::span<const std::uint8_t> bytes, int level, int strategy) {
    z_stream deflater{};
    if (deflateInit2(&deflater, level, Z_DEFLATED, MAX_WBITS, 8, strategy) != Z_OK)
        throw std::runtime_error("zlib does not deflate");
    std::vector<std::uint8_t> stream(deflateBound(&deflater, bytes.size()));
    deflater.next_in = const_cast<Bytef*>(bytes.data());
    deflater.avail_in = static_cast<uInt>(bytes.size());
    deflater.next_out = stream.data();
    deflater.avail_out = static_cast<uInt>(stream.size());
    const int result = deflate(&deflater, Z_FINISH);
    stream.resize(deflater.total_out);
    deflateEnd(&deflater);
    if (result != Z_STREAM_END)
        throw std::runtime_error("zlib does not deflate to the end");
    return stream;
}

std::vector<std::uint8_t> inflatedByZlib(std::span<const std::uint8_t> stream, std::size_t room) {
    std::vector<std::uint8_t> bytes(room);
    uLongf byteCount = room;
    if (stream.empty() || room == 0)
        return {};
    uncompress(bytes.data(), &byteCount, stream.data(), stream.size());
    bytes.resize(byteCount);
    return bytes;
}

} // namespace test
