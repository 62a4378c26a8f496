#include "krohost/convert/encodeArray.h"

#include "krohost/convert/WriteError.h"
#include "krohost/convert/blocks.h"
#include "krohost/reader/values.h"

#include <fmt/format.h>
#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <memory>
#include <vector>

namespace krohost::convert {

static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::size_t blockByteCount = 1 << 16;

using Bytes = std::span<const std::byte>;

void append(std::vector<std::byte>& bytes, Bytes more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// The text of some bytes, with padding at its end.
std::string base64(Bytes bytes) {
    constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t begin = 0; begin < bytes.size(); begin += 3) {
        std::uint32_t group = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - begin);
        for (std::size_t index = 0; index < count; ++index)
            group |= std::to_integer<std::uint32_t>(bytes[begin + index]) << (16 - 8 * index);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? digits[group >> (18 - 6 * digit) & 63] : '=';
    }
    return text;
}

void reverseItems(std::span<std::byte> bytes, std::size_t itemByteCount) {
    for (std::size_t begin = 0; begin < bytes.size(); begin += itemByteCount)
        std::reverse(&bytes[begin], &bytes[begin] + itemByteCount);
}

/// Bytes on their way into the file, as they are or as one base64 text.
class ByteWriter {
public:
    ByteWriter(OutputFile& file, bool isBase64) : file_{file}, isBase64_{isBase64} {}

    void write(Bytes bytes) {
        if (!isBase64_)
            return file_.write(bytes);
        append(rest_, bytes);
        const std::size_t wholeCount = rest_.size() - rest_.size() % 3;
        file_.write(base64({rest_.data(), wholeCount}));
        rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(wholeCount));
    }
    /// Ends the base64 text.
    void finish() {
        file_.write(base64(rest_));
        rest_.clear();
    }

private:
    OutputFile& file_;
    bool isBase64_;
    std::vector<std::byte> rest_; // no whole group yet
};

/// Header words in the file's width and byte order.
std::vector<std::byte> headerBytes(const Encoding& encoding, const std::vector<std::uint64_t>& words) {
    std::vector<std::byte> bytes;
    for (const std::uint64_t word : words) {
        if (encoding.headerWordByteCount == 4 && word > std::numeric_limits<std::uint32_t>::max())
            throw WriteError("An array has more bytes than UInt32 header words can tell; use --header UInt64.");
        append(bytes, std::as_bytes(std::span{&word, 1}).first(encoding.headerWordByteCount));
    }
    if (encoding.isBigEndian)
        reverseItems(bytes, encoding.headerWordByteCount);
    return bytes;
}

/// Where the values of one array go.
class Encoder {
public:
    virtual ~Encoder() = default;
    /// At most a block of whole values.
    virtual void write(Bytes values) = 0;
    virtual void finish() = 0;
};

class AsciiEncoder final : public Encoder {
public:
    AsciiEncoder(OutputFile& file, ElementType type, std::uint64_t componentCount)
        : file_{file}, type_{type}, perLine_{componentCount > 1 ? componentCount : 12} {}

    void write(Bytes values) override {
        fmt::memory_buffer text;
        reader::forEachValue(type_, values, [&](auto value) {
            fmt::format_to(std::back_inserter(text), "{}{}", +value, ++count_ % perLine_ == 0 ? '\n' : ' ');
        });
        file_.write({text.data(), text.size()});
    }
    void finish() override {
        if (count_ % perLine_ != 0)
            file_.write("\n");
    }

private:
    OutputFile& file_;
    ElementType type_;
    std::uint64_t perLine_;
    std::uint64_t count_ = 0;
};

/// The number of bytes, then the bytes; base64 holds both in one text.
class PlainEncoder final : public Encoder {
public:
    PlainEncoder(OutputFile& file, const Encoding& encoding, std::uint64_t byteCount)
        : writer_{file, encoding.format != Format::raw} {
        writer_.write(headerBytes(encoding, {byteCount}));
    }
    void write(Bytes values) override { writer_.write(values); }
    void finish() override { writer_.finish(); }

private:
    ByteWriter writer_;
};

/// Blocks, each compressed for itself, after a table of their sizes that is filled in at the end.
class ZlibEncoder final : public Encoder {
public:
    ZlibEncoder(OutputFile& file, const Encoding& encoding, std::uint64_t byteCount)
        : file_{file}, encoding_{encoding}, writer_{file, encoding.format != Format::raw},
          compressor_{libdeflate_alloc_compressor(6), libdeflate_free_compressor}, headerPosition_{file.position()} {
        if (!compressor_)
            throw std::bad_alloc();
        compressed_.resize(libdeflate_zlib_compress_bound(compressor_.get(), blockByteCount));
        const std::uint64_t blockCount = (byteCount + blockByteCount - 1) / blockByteCount;
        header_ = {blockCount, blockByteCount, byteCount % blockByteCount};
        header_.resize(3 + blockCount);
        file.write(headerText());
    }

    void write(Bytes values) override {
        const std::size_t count = libdeflate_zlib_compress(compressor_.get(), values.data(), values.size(),
                                                           compressed_.data(), compressed_.size());
        header_.at(3 + blockIndex_++) = count;
        writer_.write({compressed_.data(), count});
    }
    void finish() override {
        writer_.finish();
        file_.patch(headerPosition_, headerText());
    }

private:
    std::string headerText() const {
        const std::vector<std::byte> bytes = headerBytes(encoding_, header_);
        if (encoding_.format != Format::raw)
            return base64(bytes);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

    OutputFile& file_;
    const Encoding& encoding_;
    ByteWriter writer_;
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor_;
    std::vector<std::byte> compressed_;
    std::uint64_t headerPosition_;
    std::vector<std::uint64_t> header_;
    std::size_t blockIndex_ = 0;
};

std::unique_ptr<Encoder> makeEncoder(OutputFile& file, const Encoding& encoding, const Array& array) {
    const std::uint64_t byteCount = array.valueCount() * reader::byteCount(array.type);
    if (encoding.format == Format::ascii)
        return std::make_unique<AsciiEncoder>(file, array.type, array.componentCount);
    if (encoding.isCompressed)
        return std::make_unique<ZlibEncoder>(file, encoding, byteCount);
    return std::make_unique<PlainEncoder>(file, encoding, byteCount);
}

} // namespace

void encodeArray(OutputFile& file, const Encoding& encoding, const Array& array) {
    const std::unique_ptr<Encoder> encoder = makeEncoder(file, encoding, array);
    const std::size_t itemByteCount = reader::byteCount(array.type);
    const bool isReversed = encoding.isBigEndian && encoding.format != Format::ascii && itemByteCount > 1;
    const Array values{array.name, array.type, 1, array.valueCount(), array.produce}; // a block may cut a tuple
    produceInBlocks(values, blockByteCount / itemByteCount, [&](std::span<std::byte> block) {
        if (isReversed)
            reverseItems(block, itemByteCount);
        encoder->write(block);
    });
    encoder->finish();
}

} // namespace krohost::convert
