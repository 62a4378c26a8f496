#include "krohost/reader/header.h"

#include "krohost/reader/inflate.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace krohost::reader {

namespace {

bool isDecodable(const Document& document, const Array& array) {
    const bool isAppended = array.format == Format::appended;
    return array.type && array.format && document.compressor != Compressor::unknown &&
           (!isAppended || document.appendedBegin);
}

/// Reads header words; the source is then at the data.
class HeaderReader {
public:
    HeaderReader(const Document& document, ByteSource& source)
        : document_{document}, source_{source}, words_{document, source} {}

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

    void readByteCount() {
        const std::uint64_t position = source_.position();
        header_.byteCount = words_.next();
        header_.fault = words_.fault();
        if (header_.byteCount > source_.byteLimit())
            fail({.kind = FaultKind::dataBeyondFile,
                  .byte = position,
                  .expected = header_.byteCount,
                  .found = source_.byteLimit()});
    }

    void readTable() {
        const std::uint64_t position = source_.position();
        header_.blockCount = words_.next();
        header_.blockByteCount = words_.next();
        const std::uint64_t partialByteCount = words_.next();
        header_.lastBlockByteCount = partialByteCount == 0 ? header_.blockByteCount : partialByteCount;
        header_.fault = words_.fault();
        if (header_.fault || header_.blockCount == 0)
            return;
        if (header_.blockCount > source_.byteLimit() / document_.headerWordByteCount)
            return fail({.kind = FaultKind::tableBeyondFile,
                         .byte = position,
                         .expected = header_.blockCount,
                         .found = source_.byteLimit()});
        std::uint64_t compressedByteCount = 0;
        bool isOverflow = false;
        words_.forEach(header_.blockCount, [&](std::uint64_t byteCount) {
            isOverflow |= __builtin_add_overflow(compressedByteCount, byteCount, &compressedByteCount);
        });
        header_.fault = words_.fault();
        if (isOverflow || compressedByteCount > source_.byteLimit())
            fail({.kind = FaultKind::dataBeyondFile,
                  .byte = position,
                  .expected = isOverflow ? UINT64_MAX : compressedByteCount,
                  .found = source_.byteLimit()});
        else
            sumUp(position, compressedByteCount);
    }

    void sumUp(std::uint64_t position, std::uint64_t compressedByteCount) {
        std::uint64_t& byteCount = header_.byteCount;
        if (__builtin_mul_overflow(header_.blockCount - 1, header_.blockByteCount, &byteCount) ||
            __builtin_add_overflow(byteCount, header_.lastBlockByteCount, &byteCount) || byteCount > INT64_MAX)
            fail({.kind = FaultKind::sizeOverflow,
                  .byte = position,
                  .expected = header_.blockCount,
                  .found = header_.blockByteCount});
        else if (compressedByteCount < byteCount / largestRatio(document_.compressor))
            fail({.kind = FaultKind::implausibleSize,
                  .byte = position,
                  .expected = byteCount,
                  .found = compressedByteCount});
    }

    const Document& document_;
    ByteSource& source_;
    WordReader words_;
    ArrayHeader header_;
};

} // namespace

std::optional<Fault> placeFault(const Document& document, const Array& array) {
    if (!isDecodable(document, array))
        return Fault{.kind = FaultKind::undecodable, .byte = array.begin};
    if (array.begin > document.byteCount)
        return Fault{
            .kind = FaultKind::outsideFile, .byte = array.begin, .expected = array.begin, .found = document.byteCount};
    return std::nullopt;
}

std::unique_ptr<ByteSource> openSource(const Document& document, const Array& array, const Poll& poll) {
    if (array.format == Format::appended && document.isAppendedRaw)
        return std::make_unique<FileSource>(document.path, array.begin, array.end, poll);
    return std::make_unique<Base64Source>(document.path, array.begin, array.end, poll);
}

std::uint64_t WordReader::next() {
    fill(1);
    return takeReady();
}

/// Reads words ahead, `wordCount` at most. What the file does not hold counts as zeros.
void WordReader::fill(std::uint64_t wordCount) {
    const std::uint64_t position = source_.position();
    const std::uint64_t most = bytes_.size() / wordByteCount_;
    end_ = static_cast<std::size_t>(std::min(wordCount, most)) * wordByteCount_;
    next_ = 0;
    const std::size_t count = source_.read(std::span{bytes_}.first(end_));
    std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(count), bytes_.end(), std::byte{0});
    if (count < end_ && !fault_)
        fault_ = source_.fault().value_or(
            Fault{.kind = FaultKind::cutHeader, .byte = position, .expected = end_, .found = count});
}

std::uint64_t WordReader::takeReady() {
    std::array<std::byte, 8> bytes{};
    const auto end = std::copy_n(&bytes_[next_], wordByteCount_, bytes.begin());
    if (isBigEndian_)
        std::reverse(bytes.begin(), end);
    next_ += wordByteCount_;
    return std::bit_cast<std::uint64_t>(bytes);
}

ArrayHeader readHeader(const Document& document, ByteSource& source) {
    return HeaderReader{document, source}.read();
}

ArrayHeader readHeader(const Document& document, const Array& array, const Poll& poll) {
    ArrayHeader header;
    header.fault = placeFault(document, array);
    if (header.fault || array.format == Format::ascii)
        return header;
    return readHeader(document, *openSource(document, array, poll));
}

} // namespace krohost::reader
