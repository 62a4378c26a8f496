#include "krohost/vtu/inflate.h"

#include <lz4.h>
#include <lzma.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <vector>

namespace krohost::vtu {

namespace {

using Bytes = std::function<void(std::span<const std::byte>)>;

/// The bytes of one block, of which none may stay behind in the source.
class Block {
public:
    Block(ByteSource& source, std::uint64_t byteCount) : source_{source}, left_{byteCount} {}

    std::size_t read(std::span<std::byte> bytes) {
        const std::size_t count =
            source_.read(bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left_))));
        left_ = count == 0 ? 0 : left_ - count;
        return count;
    }

    void skipRest() {
        std::array<std::byte, 4096> unused;
        while (read(unused) > 0)
            continue;
    }

private:
    ByteSource& source_;
    std::uint64_t left_;
};

/// zlib's decoder and that of the xz format under one name. Each step moves on in both streams as far as it can.
struct ZlibStream {
    ZlibStream() { isSound = inflateInit(&stream) == Z_OK; }
    ~ZlibStream() { inflateEnd(&stream); }
    ZlibStream(const ZlibStream&) = delete;
    ZlibStream& operator=(const ZlibStream&) = delete;

    void step(std::span<std::byte>& in, std::span<std::byte>& out) {
        stream.next_in = reinterpret_cast<Bytef*>(in.data());
        stream.avail_in = static_cast<uInt>(in.size());
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        const int result = inflate(&stream, Z_NO_FLUSH);
        isSound = result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR;
        isAtEnd = result == Z_STREAM_END;
        in = in.last(stream.avail_in);
        out = out.first(out.size() - stream.avail_out);
    }

    z_stream stream{};
    bool isSound = false, isAtEnd = false;
};

struct LzmaStream {
    LzmaStream() { isSound = lzma_stream_decoder(&stream, memoryLimit, 0) == LZMA_OK; }
    ~LzmaStream() { lzma_end(&stream); }
    LzmaStream(const LzmaStream&) = delete;
    LzmaStream& operator=(const LzmaStream&) = delete;

    void step(std::span<std::byte>& in, std::span<std::byte>& out) {
        stream.next_in = reinterpret_cast<const std::uint8_t*>(in.data());
        stream.avail_in = in.size();
        stream.next_out = reinterpret_cast<std::uint8_t*>(out.data());
        stream.avail_out = out.size();
        const lzma_ret result = lzma_code(&stream, LZMA_RUN);
        isSound = result == LZMA_OK || result == LZMA_STREAM_END || result == LZMA_BUF_ERROR;
        isAtEnd = result == LZMA_STREAM_END;
        in = in.last(stream.avail_in);
        out = out.first(out.size() - stream.avail_out);
    }

    static constexpr std::uint64_t memoryLimit = 256 << 20; // the strongest setting of the encoder asks for 65 MiB
    lzma_stream stream = LZMA_STREAM_INIT;
    bool isSound = false, isAtEnd = false;
};

template <class Stream>
Inflated inflateStream(Block& block, std::uint64_t expectedByteCount, const Bytes& sink) {
    Stream stream;
    Inflated result;
    std::array<std::byte, 16384> input, output;
    std::span<std::byte> in;
    bool isExhausted = false;
    while (stream.isSound && !stream.isAtEnd && result.byteCount <= expectedByteCount) {
        if (in.empty() && !isExhausted) {
            in = std::span{input}.first(block.read(input));
            isExhausted = in.empty();
        }
        std::span<std::byte> out{output};
        const std::size_t before = in.size();
        stream.step(in, out);
        sink(out.first(
            static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), expectedByteCount - result.byteCount))));
        result.byteCount += out.size();
        if (isExhausted && out.empty() && in.size() == before)
            break; // the block is cut
    }
    result.isDamaged = !stream.isAtEnd && result.byteCount <= expectedByteCount;
    return result;
}

/// Has no form that can be read in steps; both sides are in memory, bounded by the file's bytes.
Inflated inflateLz4(Block& block, std::uint64_t compressedByteCount, std::uint64_t expectedByteCount,
                    const Bytes& sink) {
    if (compressedByteCount > LZ4_MAX_INPUT_SIZE || expectedByteCount > LZ4_MAX_INPUT_SIZE)
        return {0, true};
    std::vector<std::byte> input(compressedByteCount), output(expectedByteCount);
    const std::size_t inputCount = block.read(input);
    const int count =
        LZ4_decompress_safe(reinterpret_cast<const char*>(input.data()), reinterpret_cast<char*>(output.data()),
                            static_cast<int>(inputCount), static_cast<int>(output.size()));
    if (count < 0)
        return {0, true}; // also for a block that inflates to more
    sink(std::span{output}.first(static_cast<std::size_t>(count)));
    return {static_cast<std::uint64_t>(count), false};
}

} // namespace

std::uint64_t largestRatio(Compressor compressor) {
    switch (compressor) {
    case Compressor::zlib:
        return 1032;
    case Compressor::lz4:
        return 255;
    default:
        return 10000;
    }
}

Inflated inflateBlock(Compressor compressor, ByteSource& source, std::uint64_t compressedByteCount,
                      std::uint64_t expectedByteCount, const Bytes& sink) {
    Block block{source, compressedByteCount};
    const Inflated result = compressor == Compressor::zlib ? inflateStream<ZlibStream>(block, expectedByteCount, sink)
                            : compressor == Compressor::lzma
                                ? inflateStream<LzmaStream>(block, expectedByteCount, sink)
                                : inflateLz4(block, compressedByteCount, expectedByteCount, sink);
    block.skipRest();
    return result;
}

} // namespace krohost::vtu
