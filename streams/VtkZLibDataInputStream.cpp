#include "streams/VtkZLibDataInputStream.h"

#include "streams/VtkXMLDataHeader.h"
#include "streams/byteOrder.h"
#include "streams/messages.h"

#include "host/exceptions.h"
#include "host/readSome.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace veltra::vtkfile {

VtkZLibDataInputStream::VtkZLibDataInputStream(dataio::InputStreamPtr source, const DataArray& array,
                                               std::uint64_t& valueCount)
    : source_(std::move(source)), swapBytes_(needsSwap(array.bigEndian)), headerSize_(array.headerSize) {
    readBlockTable(array);
    valueCount = array.format == DataArrayFormat::Ascii ? 0 : uncompressedSize_ / elementByteCount(array.type);
}

void VtkZLibDataInputStream::readBlockTable(const DataArray& array) {
    const auto readWord = [&] { return readDataHeader(*source_, swapBytes_, headerSize_)->value(); };
    numberOfBlocks_ = readWord();
    blockSize_ = readWord();
    lastBlockSize_ = readWord();
    if (numberOfBlocks_ == 0)
        return;
    const auto available = static_cast<std::uint64_t>(source_->available());
    if (numberOfBlocks_ > available / headerSize_)
        throw IOException(blockTableBeyondFile(array, numberOfBlocks_, available));
    const std::uint64_t compressedSize = readCompressedSizes(array, available - numberOfBlocks_ * headerSize_);

    // The sum over the blocks, all but the last of which are full.
    const std::uint64_t last = blockByteCount(numberOfBlocks_ - 1);
    std::uint64_t sum = 0;
    if (__builtin_mul_overflow(numberOfBlocks_ - 1, blockSize_, &sum) || __builtin_add_overflow(sum, last, &sum) ||
        sum > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        throw IOException(inflatedSizeOverflow(array, numberOfBlocks_, blockSize_));
    if (sum > Inflater::largestOutput(compressedSize))
        throw IOException(inflatedSizeImplausible(array, sum, compressedSize));
    uncompressedSize_ = sum;
}

/// Reads the sizes of all blocks, which must fit into `available` bytes; returns their sum.
std::uint64_t VtkZLibDataInputStream::readCompressedSizes(const DataArray& array, std::uint64_t available) {
    compressedSizes_.reserve(numberOfBlocks_);
    std::uint64_t sum = 0;
    for (std::uint64_t block = 0; block < numberOfBlocks_; ++block) {
        const std::uint64_t size = readDataHeader(*source_, swapBytes_, headerSize_)->value();
        if (size > available)
            throw IOException(compressedBlocksBeyondFile(array, available));
        available -= size;
        sum += size;
        maxCompressedSize_ = std::max(maxCompressedSize_, size);
        compressedSizes_.push_back(size);
    }
    return sum;
}

std::uint64_t VtkZLibDataInputStream::blockByteCount(std::uint64_t blockIndex) const {
    return lastBlockSize_ != 0 && blockIndex + 1 == numberOfBlocks_ ? lastBlockSize_ : blockSize_;
}

void VtkZLibDataInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    std::span<std::uint8_t> rest(dst, std::min<std::uint64_t>(byteCount, uncompressedSize_ - position_));
    const bool complete = rest.size() == byteCount;
    while (!rest.empty()) {
        const std::size_t delivered = deliver(rest);
        position_ += delivered;
        rest = rest.subspan(delivered);
    }
    if (!complete)
        throw IOException(endOfCompressedData);
}

/// Delivers some of the bytes that come next; returns how many, which may be none.
std::size_t VtkZLibDataInputStream::deliver(std::span<std::uint8_t> dst) {
    if (blockBegin_ < block_.size()) {
        const std::size_t count = std::min(dst.size(), block_.size() - blockBegin_);
        std::memcpy(dst.data(), block_.data() + blockBegin_, count);
        blockBegin_ += count;
        return count;
    }
    if (nextBlock_ == numberOfBlocks_) {
        std::fill(dst.begin(), dst.end(), std::uint8_t{0});
        return dst.size();
    }
    if (const std::uint64_t room = roomForNextBlock(); room <= dst.size())
        return inflateNextBlock(dst.first(room));
    fill();
    return 0;
}

void VtkZLibDataInputStream::skip(std::size_t byteCount) {
    const std::size_t count = std::min(byteCount, block_.size() - blockBegin_);
    blockBegin_ += count;
    position_ += count;
    InputStreamInterface::skip(byteCount - count);
}

std::span<const std::uint8_t> VtkZLibDataInputStream::peek() {
    while (blockBegin_ == block_.size() && nextBlock_ < numberOfBlocks_)
        fill();
    const auto bytes = std::span<const std::uint8_t>(block_).subspan(blockBegin_);
    return bytes.first(std::min<std::uint64_t>(bytes.size(), uncompressedSize_ - position_));
}

/// Inflates the next block into `block_`, all of which is delivered. A failure leaves it as it was, or empty.
void VtkZLibDataInputStream::fill() {
    std::vector<std::uint8_t> room = std::exchange(block_, {});
    blockBegin_ = 0;
    room.resize(roomForNextBlock());
    room.resize(inflateNextBlock(room));
    block_ = std::move(room);
}

/// A block cannot yield more than its compressed bytes allow, whatever the table claims.
std::uint64_t VtkZLibDataInputStream::roomForNextBlock() const {
    return std::min(blockByteCount(nextBlock_), Inflater::largestOutput(compressedSizes_[nextBlock_]));
}

std::size_t VtkZLibDataInputStream::inflateNextBlock(std::span<std::uint8_t> room) {
    if (!inflater_)
        inflater_ = std::make_unique<Inflater>();
    const std::uint64_t compressedSize = compressedSizes_[nextBlock_];
    std::span<const std::uint8_t> ready = fetchedSize_ == 0 ? source_->peek() : std::span<const std::uint8_t>();
    const bool isReady = ready.size() >= compressedSize;
    const std::size_t byteCount =
        inflater_->inflate(isReady ? ready.first(compressedSize) : fetchBlock(compressedSize), room);
    if (isReady)
        source_->skip(compressedSize);
    fetchedSize_ = 0;
    ++nextBlock_;
    return byteCount;
}

/// Reads a compressed block. Who asks again after a failure gets the same failure, or the rest of the same block.
std::span<const std::uint8_t> VtkZLibDataInputStream::fetchBlock(std::uint64_t byteCount) {
    if (!scratch_)
        scratch_ = std::make_unique_for_overwrite<std::uint8_t[]>(maxCompressedSize_);
    while (fetchedSize_ < byteCount)
        fetchedSize_ += dataio::readSome(*source_, scratch_.get() + fetchedSize_, byteCount - fetchedSize_);
    return {scratch_.get(), byteCount};
}

void VtkZLibDataInputStream::close() {
    uncompressedSize_ = position_;
    source_->close();
    block_ = {};
    scratch_.reset();
}

} // namespace veltra::vtkfile
