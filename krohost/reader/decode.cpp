#include "krohost/reader/decode.h"

#include "krohost/reader/header.h"
#include "krohost/reader/inflate.h"
#include "krohost/reader/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace krohost::reader {

static_assert(std::endian::native == std::endian::little, "values are handed on as little-endian bytes");

/// What all forms of an array have in common: bytes come, and then there are no more.
class ValueSource {
public:
    ValueSource(const Document& document, const Array& array) : isSwapping_{document.isBigEndian}, array_{array} {}
    virtual ~ValueSource() = default;

    std::size_t read(std::span<std::byte> bytes) {
        const std::size_t valueByteCount = array_.type ? byteCount(*array_.type) : 1;
        bytes = bytes.first(bytes.size() - bytes.size() % valueByteCount);
        std::size_t count = 0;
        while (count < bytes.size()) {
            const std::size_t more = readSome(bytes.subspan(count));
            if (more == 0)
                break;
            count += more;
            comeByteCount_ += more;
        }
        const std::size_t rest = count % valueByteCount;
        if (rest > 0)
            add({.kind = FaultKind::partialValue, .byte = position(), .expected = valueByteCount, .found = rest});
        if (isSwapping_ && array_.format != Format::ascii && valueByteCount > 1)
            for (std::size_t begin = 0; begin + valueByteCount <= count; begin += valueByteCount)
                std::reverse(&bytes[begin], &bytes[begin] + valueByteCount);
        decoded.byteCount += count - rest;
        return count - rest;
    }

    Decoded decoded;

protected:
    /// Some of the bytes that come next; none at the end.
    virtual std::size_t readSome(std::span<std::byte> bytes) = 0;
    virtual std::uint64_t position() const = 0;

    void add(Fault fault) { add(std::move(fault), comeByteCount_); }
    void add(Fault fault, std::uint64_t valueByte) {
        constexpr std::size_t faultLimit = 1000;
        fault.valueByte = valueByte;
        if (decoded.faults.size() < faultLimit)
            decoded.faults.push_back(std::move(fault));
    }

private:
    bool isSwapping_;
    const Array& array_;
    std::uint64_t comeByteCount_ = 0;
};

namespace {

class Nothing final : public ValueSource {
public:
    Nothing(const Document& document, const Array& array, Fault fault) : ValueSource{document, array} {
        add(std::move(fault));
    }

    std::size_t readSome(std::span<std::byte>) override { return 0; }
    std::uint64_t position() const override { return 0; }
};

class Text final : public ValueSource {
public:
    Text(const Document& document, const Array& array, const Poll& poll)
        : ValueSource{document, array}, source_{document.path, array.begin, array.end, poll}, text_{source_,
                                                                                                    *array.type} {}

    std::size_t readSome(std::span<std::byte> bytes) override {
        const std::size_t count = text_.read(bytes);
        if (count == 0 && !std::exchange(isAtEnd_, true))
            for (const std::optional<Fault>& fault : {text_.fault(), source_.fault()})
                if (fault)
                    add(*fault);
        return count;
    }
    std::uint64_t position() const override { return source_.position(); }

private:
    FileSource source_;
    TextReader text_;
    bool isAtEnd_ = false;
};

class Plain final : public ValueSource {
public:
    Plain(const Document& document, const Array& array, std::unique_ptr<ByteSource> source, std::uint64_t byteCount)
        : ValueSource{document, array}, source_{std::move(source)}, byteCount_{byteCount}, left_{byteCount} {}

    std::size_t readSome(std::span<std::byte> bytes) override {
        const std::size_t count =
            source_->read(bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left_))));
        left_ -= count;
        if (count == 0 && left_ > 0) {
            add(source_->fault().value_or(Fault{.kind = FaultKind::cutData,
                                                .byte = source_->position(),
                                                .expected = byteCount_,
                                                .found = byteCount_ - left_}));
            left_ = 0;
        }
        return count;
    }
    std::uint64_t position() const override { return source_->position(); }

private:
    std::unique_ptr<ByteSource> source_;
    std::uint64_t byteCount_, left_;
};

/// The table of blocks is read a second time, beside the blocks, because it may be as long as the file.
class Blocks final : public ValueSource {
public:
    Blocks(const Document& document, const Array& array, const Poll& poll, std::unique_ptr<ByteSource> source,
           const ArrayHeader& header)
        : ValueSource{document, array}, compressor_{document.compressor}, source_{std::move(source)},
          table_{openSource(document, array, poll)}, words_{document, *table_}, header_{header} {
        for (int word = 0; word < 3; ++word) // before the table
            words_.next();
    }

    std::size_t readSome(std::span<std::byte> bytes) override {
        while (!isOver_ && (block_ || nextBlock_ < header_.blockCount)) {
            if (!block_ && !openNext())
                break;
            if (const std::size_t count = readBlock(bytes); count > 0)
                return count;
        }
        return 0;
    }
    std::uint64_t position() const override { return source_->position(); }

private:
    bool openNext() {
        const std::uint64_t compressed = words_.next();
        expected_ = ++nextBlock_ < header_.blockCount ? header_.blockByteCount : header_.lastBlockByteCount;
        left_ = expected_;
        begin_ = source_->position();
        isInflating_ = true;
        const bool isPlausible = compressed >= expected_ / largestRatio(compressor_);
        if (words_.fault())
            add(*words_.fault());
        else if (!isPlausible || !isBlockReadable(compressor_, compressed, expected_))
            addOfBlock(isPlausible ? FaultKind::blockTooLarge : FaultKind::implausibleSize, compressed);
        else
            block_ = openBlock(compressor_, *source_, compressed, expected_);
        isOver_ = !block_;
        return !isOver_;
    }

    void addOfBlock(FaultKind kind, std::uint64_t found) {
        add({kind, nextBlock_ - 1, begin_, expected_, found, {}, 0}, (nextBlock_ - 1) * header_.blockByteCount);
    }

    /// What the block inflates to, then zeros; nothing once it has come to its end.
    std::size_t readBlock(std::span<std::byte> bytes) {
        bytes = bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left_)));
        std::size_t count = isInflating_ && left_ > 0 ? block_->read(bytes) : 0;
        if (isInflating_ && count == 0)
            finishInflating();
        if (!isInflating_ && count == 0 && left_ > 0) {
            std::fill(bytes.begin(), bytes.end(), std::byte{0});
            count = bytes.size();
        }
        left_ -= count;
        if (!isInflating_ && left_ == 0)
            block_.reset();
        return count;
    }

    void finishInflating() {
        isInflating_ = false;
        const Inflated inflated = block_->finish();
        if (auto fault = source_->fault()) {
            add(*fault);
            isOver_ = true;
        } else if (inflated.isDamaged || inflated.byteCount != expected_) {
            addOfBlock(inflated.isDamaged ? FaultKind::damagedBlock : FaultKind::wrongBlockSize, inflated.byteCount);
        }
    }

    Compressor compressor_;
    std::unique_ptr<ByteSource> source_, table_;
    WordReader words_;
    ArrayHeader header_;
    std::uint64_t nextBlock_ = 0;
    std::unique_ptr<BlockReader> block_; // the one that is being read
    std::uint64_t begin_ = 0, expected_ = 0, left_ = 0;
    bool isInflating_ = false; // else zeros come
    bool isOver_ = false;
};

std::unique_ptr<ValueSource> open(const Document& document, const Array& array, const Poll& poll) {
    if (auto fault = placeFault(document, array))
        return std::make_unique<Nothing>(document, array, *fault);
    if (array.format == Format::ascii)
        return std::make_unique<Text>(document, array, poll);
    auto source = openSource(document, array, poll);
    const ArrayHeader header = readHeader(document, *source);
    if (header.fault)
        return std::make_unique<Nothing>(document, array, *header.fault);
    if (document.compressor == Compressor::none)
        return std::make_unique<Plain>(document, array, std::move(source), header.byteCount);
    return std::make_unique<Blocks>(document, array, poll, std::move(source), header);
}

} // namespace

ArrayReader::ArrayReader(const Document& document, const Array& array, const Poll& poll)
    : poll_{poll}, source_{open(document, array, poll)} {}

ArrayReader::~ArrayReader() = default;

std::size_t ArrayReader::read(std::span<std::byte> bytes) {
    if (poll_)
        poll_(); // a few bytes of the file may be a long time's work
    return source_->read(bytes);
}

const Decoded& ArrayReader::decoded() const {
    return source_->decoded;
}

Decoded decode(const Document& document, const Array& array, const Sink& sink, const Poll& poll) {
    ArrayReader reader{document, array, poll};
    const auto block = std::make_unique_for_overwrite<std::array<std::byte, 65536>>();
    while (const std::size_t count = reader.read(*block))
        sink(std::span{*block}.first(count));
    return reader.decoded();
}

} // namespace krohost::reader
