#include "krohost/vtu/decode.h"

#include "krohost/vtu/ByteSource.h"
#include "krohost/vtu/inflate.h"
#include "krohost/vtu/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>

namespace krohost::vtu {

static_assert(std::endian::native == std::endian::little, "values are handed on as little-endian bytes");

namespace {

/// Cuts bytes into whole values in this machine's order.
class ValueWriter {
public:
    ValueWriter(std::size_t valueByteCount, bool isSwapping, const Sink& sink)
        : valueByteCount_{valueByteCount}, isSwapping_{isSwapping && valueByteCount > 1}, sink_{sink} {}

    void write(std::span<const std::byte> bytes) {
        byteCount_ += bytes.size();
        while (!bytes.empty()) {
            const std::size_t count = std::min(bytes.size(), buffer_.size() - fill_);
            std::copy_n(bytes.begin(), count, buffer_.begin() + static_cast<std::ptrdiff_t>(fill_));
            fill_ += count;
            bytes = bytes.subspan(count);
            if (fill_ == buffer_.size())
                flush();
        }
    }

    void writeZeros(std::uint64_t byteCount) {
        static constexpr std::array<std::byte, 4096> zeros{};
        for (; byteCount > 0; byteCount -= std::min<std::uint64_t>(byteCount, zeros.size()))
            write(std::span{zeros}.first(static_cast<std::size_t>(std::min<std::uint64_t>(byteCount, zeros.size()))));
    }

    /// Hands on what is there; gives the bytes of a value that is not whole.
    std::size_t flush() {
        const std::size_t whole = fill_ - fill_ % valueByteCount_;
        if (isSwapping_)
            for (std::size_t begin = 0; begin < whole; begin += valueByteCount_)
                std::reverse(&buffer_[begin], &buffer_[begin] + valueByteCount_);
        if (whole > 0)
            sink_(std::span{buffer_}.first(whole));
        return fill_ = fill_ - whole; // the buffer holds whole values, so that a rest is the last there is
    }

    std::uint64_t byteCount() const { return byteCount_; }

private:
    std::size_t valueByteCount_;
    bool isSwapping_;
    const Sink& sink_;
    std::array<std::byte, 65536> buffer_;
    std::size_t fill_ = 0;
    std::uint64_t byteCount_ = 0;
};

bool isDecodable(const Document& document, const Array& array) {
    const bool isAppended = array.format == Format::appended;
    return array.type && array.format && document.compressor != Compressor::unknown &&
           (!isAppended || document.appendedBegin);
}

std::optional<Fault> placeFault(const Document& document, const Array& array) {
    if (!isDecodable(document, array))
        return Fault{.kind = FaultKind::undecodable, .byte = array.begin};
    if (array.begin > document.byteCount)
        return Fault{
            .kind = FaultKind::outsideFile, .byte = array.begin, .expected = array.begin, .found = document.byteCount};
    return std::nullopt;
}

std::unique_ptr<ByteSource> openSource(const Document& document, const Array& array) {
    if (array.format == Format::appended && document.isAppendedRaw)
        return std::make_unique<FileSource>(document.path, array.begin, array.end);
    return std::make_unique<Base64Source>(document.path, array.begin, array.end);
}

/// Reads header words; what it finds wrong stays for the caller.
class HeaderReader {
public:
    HeaderReader(const Document& document, ByteSource& source) : document_{document}, source_{source} {}

    ArrayHeader read() {
        if (document_.compressor == Compressor::none)
            readByteCount();
        else
            readTable();
        return std::move(header_);
    }

private:
    void fail(Fault fault) {
        if (!header_.fault)
            header_.fault = std::move(fault);
    }

    std::uint64_t word() {
        std::array<std::byte, 8> bytes{};
        const std::span<std::byte> own = std::span{bytes}.first(document_.headerWordByteCount);
        const std::uint64_t position = source_.position();
        const std::size_t count = source_.read(own);
        if (count < own.size())
            fail(source_.fault().value_or(
                Fault{.kind = FaultKind::cutHeader, .byte = position, .expected = own.size(), .found = count}));
        if (document_.isBigEndian)
            std::reverse(own.begin(), own.end());
        return std::bit_cast<std::uint64_t>(bytes);
    }

    void readByteCount() {
        const std::uint64_t position = source_.position();
        header_.byteCount = word();
        header_.firstBlock = source_.position();
        if (header_.byteCount > source_.byteLimit())
            fail({.kind = FaultKind::dataBeyondFile,
                  .byte = position,
                  .expected = header_.byteCount,
                  .found = source_.byteLimit()});
    }

    void readTable() {
        const std::uint64_t position = source_.position();
        const std::uint64_t blockCount = word();
        header_.blockByteCount = word();
        const std::uint64_t partialByteCount = word();
        header_.lastBlockByteCount = partialByteCount == 0 ? header_.blockByteCount : partialByteCount;
        if (header_.fault || blockCount == 0)
            return;
        if (blockCount > source_.byteLimit() / document_.headerWordByteCount)
            return fail({.kind = FaultKind::tableBeyondFile,
                         .byte = position,
                         .expected = blockCount,
                         .found = source_.byteLimit()});
        std::uint64_t compressedByteCount = 0;
        bool isOverflow = false;
        for (std::uint64_t block = 0; block < blockCount; ++block) {
            header_.blockCompressedByteCounts.push_back(word());
            isOverflow |= __builtin_add_overflow(compressedByteCount, header_.blockCompressedByteCounts.back(),
                                                 &compressedByteCount);
        }
        header_.firstBlock = source_.position();
        if (isOverflow || compressedByteCount > source_.byteLimit())
            fail({.kind = FaultKind::dataBeyondFile,
                  .byte = position,
                  .expected = isOverflow ? UINT64_MAX : compressedByteCount,
                  .found = source_.byteLimit()});
        if (__builtin_mul_overflow(blockCount - 1, header_.blockByteCount, &header_.byteCount) ||
            __builtin_add_overflow(header_.byteCount, header_.lastBlockByteCount, &header_.byteCount))
            fail({.kind = FaultKind::sizeOverflow,
                  .byte = position,
                  .expected = blockCount,
                  .found = header_.blockByteCount});
    }

    const Document& document_;
    ByteSource& source_;
    ArrayHeader header_;
};

class Decoder {
public:
    Decoder(const Document& document, const Array& array, const Sink& sink)
        : document_{document}, array_{array}, writer_{byteCount(*array.type),
                                                      document.isBigEndian && array.format != Format::ascii, sink} {}

    Decoded run() {
        if (array_.format == Format::ascii)
            decodeAscii();
        else
            decodeBinary();
        const std::size_t rest = writer_.flush();
        result_.byteCount = writer_.byteCount() - rest;
        if (rest > 0)
            add({.kind = FaultKind::partialValue, .byte = end_, .expected = byteCount(*array_.type), .found = rest});
        return std::move(result_);
    }

private:
    void add(Fault fault) {
        constexpr std::size_t faultLimit = 1000;
        if (result_.faults.size() < faultLimit)
            result_.faults.push_back(std::move(fault));
    }

    void decodeAscii() {
        FileSource source{document_.path, array_.begin, array_.end};
        if (auto fault =
                decodeText(source, *array_.type, [this](std::span<const std::byte> bytes) { writer_.write(bytes); }))
            add(*fault);
        if (auto fault = source.fault())
            add(*fault);
        end_ = source.position();
    }

    void decodeBinary() {
        const auto source = openSource(document_, array_);
        const ArrayHeader header = HeaderReader{document_, *source}.read();
        if (header.fault)
            add(*header.fault);
        else if (document_.compressor == Compressor::none)
            copy(*source, header.byteCount);
        else
            inflate(*source, header);
        end_ = source->position();
    }

    void copy(ByteSource& source, std::uint64_t byteCount) {
        std::array<std::byte, 16384> block;
        std::uint64_t left = byteCount;
        while (left > 0) {
            const std::size_t count = source.read(
                std::span{block}.first(static_cast<std::size_t>(std::min<std::uint64_t>(left, block.size()))));
            if (count == 0)
                break;
            writer_.write(std::span{block}.first(count));
            left -= count;
        }
        if (left > 0)
            add(source.fault().value_or(Fault{.kind = FaultKind::cutData,
                                              .byte = source.position(),
                                              .expected = byteCount,
                                              .found = byteCount - left}));
    }

    void inflate(ByteSource& source, const ArrayHeader& header) {
        const std::size_t blockCount = header.blockCompressedByteCounts.size();
        for (std::size_t block = 0; block < blockCount; ++block) {
            const std::uint64_t expected = block + 1 < blockCount ? header.blockByteCount : header.lastBlockByteCount;
            const std::uint64_t compressed = header.blockCompressedByteCounts[block];
            const std::uint64_t position = source.position();
            if (compressed < UINT64_MAX / largestRatio(document_.compressor) &&
                expected > compressed * largestRatio(document_.compressor))
                return add({FaultKind::implausibleSize, block, position, expected, compressed, {}});
            const std::uint64_t before = writer_.byteCount();
            const Inflated inflated = inflateBlock(document_.compressor, source, compressed, expected,
                                                   [this](std::span<const std::byte> bytes) { writer_.write(bytes); });
            writer_.writeZeros(expected - (writer_.byteCount() - before));
            if (auto fault = source.fault())
                return add(*fault);
            if (inflated.isDamaged || inflated.byteCount != expected)
                add({inflated.isDamaged ? FaultKind::damagedBlock : FaultKind::wrongBlockSize,
                     block,
                     position,
                     expected,
                     inflated.byteCount,
                     {}});
        }
    }

    const Document& document_;
    const Array& array_;
    ValueWriter writer_;
    Decoded result_;
    std::uint64_t end_ = 0;
};

} // namespace

ArrayHeader readHeader(const Document& document, const Array& array) {
    ArrayHeader header;
    header.fault = placeFault(document, array);
    if (header.fault || array.format == Format::ascii)
        return header;
    return HeaderReader{document, *openSource(document, array)}.read();
}

Decoded decode(const Document& document, const Array& array, const Sink& sink) {
    if (auto fault = placeFault(document, array))
        return {0, {*fault}};
    return Decoder{document, array, sink}.run();
}

} // namespace krohost::vtu
