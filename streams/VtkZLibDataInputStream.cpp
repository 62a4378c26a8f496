#include "streams/VtkZLibDataInputStream.h"

#include "streams/VtkXMLDataHeader.h"
#include "streams/byteOrder.h"
#include "streams/messages.h"

#include "host/exceptions.h"

#include <algorithm>
#include <cstring>
#include <limits>

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
    // A block cannot yield more than its compressed bytes allow, whatever the table claims.
    const std::uint64_t room =
        std::min(blockByteCount(nextBlock_), Inflater::largestOutput(compressedSizes_[nextBlock_]));
    if (room <= dst.size())
        return inflateNextBlock(dst.first(room));
    block_.resize(room);
    blockBegin_ = 0;
    block_.resize(inflateNextBlock(block_));
    return 0;
}

std::size_t VtkZLibDataInputStream::inflateNextBlock(std::span<std::uint8_t> room) {
    if (!inflater_) {
        inflater_ = std::make_unique<Inflater>();
        scratch_ = std::make_unique_for_overwrite<std::uint8_t[]>(maxCompressedSize_);
    }
    const std::uint64_t compressedSize = compressedSizes_[nextBlock_++];
    source_->read(scratch_.get(), compressedSize);
    return inflater_->inflate({scratch_.get(), compressedSize}, room);
}

void VtkZLibDataInputStream::close() {
    uncompressedSize_ = position_;
    source_->close();
    block_ = {};
    scratch_.reset();
}

} // namespace veltra::vtkfile
