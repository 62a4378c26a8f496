#include "krohost/reader/inflate.h"

#include <lz4.h>
#include <lzma.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>
#include <vector>

namespace krohost::reader {

namespace {

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

    static constexpr std::uint64_t memoryLimit = 80 << 20; // the strongest setting of the encoder asks for 65 MiB
    lzma_stream stream = LZMA_STREAM_INIT;
    bool isSound = false, isAtEnd = false;
};

template <class Stream>
class StreamReader final : public BlockReader {
public:
    StreamReader(ByteSource& source, std::uint64_t compressedByteCount) : block_{source, compressedByteCount} {}

    std::size_t read(std::span<std::byte> bytes) override {
        std::size_t count = 0;
        while (count == 0 && stream_.isSound && !stream_.isAtEnd && !isCut_)
            count = step(bytes);
        byteCount_ += count;
        return count;
    }

    Inflated finish() override {
        std::array<std::byte, 4096> beyond;
        const std::size_t beyondCount = read(beyond);
        block_.skipRest();
        return {byteCount_, !stream_.isAtEnd && beyondCount == 0};
    }

private:
    std::size_t step(std::span<std::byte> bytes) {
        if (in_.empty() && !isExhausted_) {
            in_ = std::span{input_}.first(block_.read(input_));
            isExhausted_ = in_.empty();
        }
        const std::size_t before = in_.size();
        stream_.step(in_, bytes);
        isCut_ = isExhausted_ && bytes.empty() && in_.size() == before;
        return bytes.size();
    }

    Block block_;
    Stream stream_;
    std::array<std::byte, 16384> input_;
    std::span<std::byte> in_; // not yet taken
    bool isExhausted_ = false, isCut_ = false;
    std::uint64_t byteCount_ = 0;
};

/// Has no form that can be read in steps.
class Lz4Reader final : public BlockReader {
public:
    Lz4Reader(ByteSource& source, std::uint64_t compressedByteCount, std::uint64_t expectedByteCount)
        : block_{source, compressedByteCount}, output_(expectedByteCount) {
        std::vector<std::byte> input(compressedByteCount);
        const std::size_t inputCount = block_.read(input);
        const int count =
            LZ4_decompress_safe(reinterpret_cast<const char*>(input.data()), reinterpret_cast<char*>(output_.data()),
                                static_cast<int>(inputCount), static_cast<int>(output_.size()));
        isDamaged_ = count < 0; // also for a block that inflates to more
        output_.resize(static_cast<std::size_t>(std::max(count, 0)));
    }

    std::size_t read(std::span<std::byte> bytes) override {
        const std::size_t count = std::min(bytes.size(), output_.size() - next_);
        std::copy_n(output_.begin() + static_cast<std::ptrdiff_t>(next_), count, bytes.begin());
        next_ += count;
        return count;
    }

    Inflated finish() override {
        block_.skipRest();
        return {output_.size(), isDamaged_};
    }

private:
    Block block_;
    std::vector<std::byte> output_;
    std::size_t next_ = 0;
    bool isDamaged_ = false;
};

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

bool isBlockReadable(Compressor compressor, std::uint64_t compressedByteCount, std::uint64_t expectedByteCount) {
    constexpr std::uint64_t byteLimit = 64 << 20;
    return compressor != Compressor::lz4 || (compressedByteCount <= byteLimit && expectedByteCount <= byteLimit);
}

std::unique_ptr<BlockReader> openBlock(Compressor compressor, ByteSource& source, std::uint64_t compressedByteCount,
                                       std::uint64_t expectedByteCount) {
    if (compressor == Compressor::zlib)
        return std::make_unique<StreamReader<ZlibStream>>(source, compressedByteCount);
    if (compressor == Compressor::lzma)
        return std::make_unique<StreamReader<LzmaStream>>(source, compressedByteCount);
    return std::make_unique<Lz4Reader>(source, compressedByteCount, expectedByteCount);
}

} // namespace krohost::reader
