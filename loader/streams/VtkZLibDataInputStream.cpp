#include "loader/streams/VtkZLibDataInputStream.h"

#include "loader/streams/VtkXMLDataHeader.h"
#include "loader/streams/byteOrder.h"
#include "loader/streams/messages.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/readSome.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

namespace veltra::vtkfile {

VtkZLibDataInputStream::VtkZLibDataInputStream(dataio::InputStreamPtr source, const DataArray& array,
                                               std::uint64_t& valueCount, DamagedBlock damagedBlock)
    : source_(std::move(source)), swapBytes_(needsSwap(array.bigEndian)), damagedBlock_(damagedBlock),
      headerSize_(array.headerSize) {
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
    if (blockSize_ == 0 && numberOfBlocks_ > 1) // a table that takes time and gives nothing
        throw IOException(blocksWithoutBytes(array, numberOfBlocks_));
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

    static const bool isSupported = InterleavedInflater::isSupported();
    nextBlockToInterleave_ = isSupported && areBlocksSmall() ? 0 : numberOfBlocks_;
}

/// Whether a few of them at once are no burden.
bool VtkZLibDataInputStream::areBlocksSmall() const {
    constexpr std::uint64_t largest = 0x20000;
    return std::max({blockSize_, lastBlockSize_, maxCompressedSize_}) <= largest;
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
    if (std::span<const std::uint8_t>& bytes = ready(); !bytes.empty()) {
        const std::size_t count = std::min(dst.size(), bytes.size());
        std::memcpy(dst.data(), bytes.data(), count);
        bytes = bytes.subspan(count);
        return count;
    }
    if (nextBlock_ == numberOfBlocks_) {
        std::fill(dst.begin(), dst.end(), std::uint8_t{0});
        return dst.size();
    }
    if (inflateSeveral())
        return 0;
    if (const std::uint64_t room = roomForNextBlock(); room <= dst.size())
        return inflateNextBlock(dst.first(room));
    fill();
    return 0;
}

void VtkZLibDataInputStream::skip(std::size_t byteCount) {
    std::span<const std::uint8_t>& bytes = ready();
    const std::size_t count = std::min(byteCount, bytes.size());
    bytes = bytes.subspan(count);
    position_ += count;
    InputStreamInterface::skip(byteCount - count);
}

std::span<const std::uint8_t> VtkZLibDataInputStream::peek() {
    while (ready().empty() && nextBlock_ < numberOfBlocks_)
        if (!inflateSeveral())
            fill();
    return ready();
}

/// What is ready of the first block that is; nothing when none is.
std::span<const std::uint8_t>& VtkZLibDataInputStream::ready() {
    return *std::find_if(ready_.begin(), ready_.end() - 1, [](const auto& bytes) { return !bytes.empty(); });
}

/// Makes the next block ready.
void VtkZLibDataInputStream::fill() {
    const std::uint64_t room = roomForNextBlock();
    if (inflated_.size() < room)
        inflated_.resize(room);
    ready_[0] = std::span(inflated_).first(inflateNextBlock(std::span(inflated_).first(room)));
}

/// Makes a few blocks ready, where they are of usual size. False where the next one is to be inflated by itself.
bool VtkZLibDataInputStream::inflateSeveral() {
    constexpr std::uint64_t blocksBetweenTries = 16;
    const auto sizes = std::span(compressedSizes_).subspan(nextBlock_);
    const auto several = sizes.first(std::min(sizes.size(), InterleavedInflater::laneCount));
    if (nextBlock_ < nextBlockToInterleave_ || several.size() < 2)
        return false;
    if (!interleavedInflater_)
        interleavedInflater_ = std::make_unique<InterleavedInflater>();
    fetch(several.front(), std::accumulate(several.begin(), several.end(), std::uint64_t{0}));
    const std::size_t roomSize = std::max(blockSize_, lastBlockSize_) + InterleavedInflater::writeSlack;
    inflated_.resize(std::max(inflated_.size(), several.size() * roomSize));

    std::array<InterleavedInflater::Stream, InterleavedInflater::laneCount> streams;
    std::span<const std::uint8_t> rest(fetched_.get(), fetchedSize_);
    std::size_t count = 0;
    for (; count < several.size() && several[count] <= rest.size(); ++count) {
        const auto room = std::span(inflated_).subspan(count * roomSize, blockByteCount(nextBlock_ + count));
        streams[count] = {rest.first(several[count]), room};
        rest = rest.subspan(several[count]);
    }
    const std::size_t doneCount = interleavedInflater_->inflate(std::span(streams).first(count));
    for (std::size_t index = 0; index < doneCount; ++index)
        ready_[index] = streams[index].room;
    passBlocks(doneCount);
    if (doneCount == 0)
        nextBlockToInterleave_ = nextBlock_ + blocksBetweenTries;
    return doneCount > 0;
}

/// A block cannot yield more than its compressed bytes allow, whatever the table claims.
std::uint64_t VtkZLibDataInputStream::roomForNextBlock() const {
    return std::min(blockByteCount(nextBlock_), Inflater::largestOutput(compressedSizes_[nextBlock_]));
}

std::size_t VtkZLibDataInputStream::inflateNextBlock(std::span<std::uint8_t> room) {
    if (!inflater_)
        inflater_ = std::make_unique<Inflater>();
    const std::uint64_t compressedSize = compressedSizes_[nextBlock_];
    std::span<const std::uint8_t> compressed = fetchedSize_ == 0 ? source_->peek() : std::span<const std::uint8_t>();
    const bool isFetched = compressed.size() < compressedSize;
    while (isFetched && fetchedSize_ < compressedSize)
        fetch(compressedSize, compressedSize);
    if (isFetched)
        compressed = {fetched_.get(), fetchedSize_};
    const std::size_t byteCount = inflater_->inflate(compressed.first(compressedSize), room);
    if (damagedBlock_ == DamagedBlock::refused && (!inflater_->wasSound() || byteCount != blockByteCount(nextBlock_)))
        throw IOException(blockIsDamaged);
    if (!isFetched)
        source_->skip(compressedSize);
    passBlocks(1);
    return byteCount;
}

/// Reads compressed bytes until there are `most`, if there are fewer than `least`. Who asks again after an IOException
/// gets the same one, or the rest.
void VtkZLibDataInputStream::fetch(std::uint64_t least, std::uint64_t most) {
    if (!fetched_) {
        const std::uint64_t blockCount = areBlocksSmall() ? InterleavedInflater::laneCount : 1;
        fetched_ = std::make_unique_for_overwrite<std::uint8_t[]>(blockCount * maxCompressedSize_ +
                                                                  InterleavedInflater::readSlack);
    }
    if (fetchedSize_ < least)
        fetchedSize_ += dataio::readSome(*source_, fetched_.get() + fetchedSize_, most - fetchedSize_);
    std::fill_n(fetched_.get() + fetchedSize_, InterleavedInflater::readSlack, std::uint8_t{0});
}

/// Goes on to the block that comes after the next `count`.
void VtkZLibDataInputStream::passBlocks(std::size_t count) {
    const auto passed = std::span(compressedSizes_).subspan(nextBlock_, count);
    nextBlock_ += count;
    const std::uint64_t byteCount = std::accumulate(passed.begin(), passed.end(), std::uint64_t{0});
    if (fetchedSize_ > 0) {
        fetchedSize_ -= byteCount;
        std::memmove(fetched_.get(), fetched_.get() + byteCount, fetchedSize_);
    }
}

void VtkZLibDataInputStream::close() {
    uncompressedSize_ = position_;
    nextBlock_ = numberOfBlocks_;
    source_->close();
    ready_ = {};
    inflated_ = {};
    fetched_.reset();
    fetchedSize_ = 0;
}

} // namespace veltra::vtkfile
