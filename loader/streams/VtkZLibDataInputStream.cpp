#include "loader/streams/VtkZLibDataInputStream.h"

#include "loader/streams/messages.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/readSome.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

namespace veltra::vtkfile {

VtkZLibDataInputStream::VtkZLibDataInputStream(dataio::InputStreamPtr source, const DataArray& array,
                                               std::uint64_t& valueCount, DamagedBlock damagedBlock)
    : source_(std::move(source)), table_(*source_, array), damagedBlock_(damagedBlock), size_(table_.byteCount()) {
    valueCount = array.format == DataArrayFormat::Ascii ? 0 : size_ / elementByteCount(array.type);
    static const bool isSupported = InterleavedInflater::isSupported();
    nextBlockToInterleave_ = isSupported && areBlocksSmall() ? 0 : table_.blockCount();
}

/// Whether a few of them at once are no burden.
bool VtkZLibDataInputStream::areBlocksSmall() const {
    constexpr std::uint64_t largest = 0x20000;
    return std::max(table_.largestBlockByteCount(), table_.largestCompressedSize()) <= largest;
}

void VtkZLibDataInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    std::span<std::uint8_t> rest(dst, std::min<std::uint64_t>(byteCount, size_ - position_));
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
    if (nextBlock_ == table_.blockCount()) {
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
    while (ready().empty() && nextBlock_ < table_.blockCount())
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
    const auto sizes = table_.compressedSizes().subspan(nextBlock_);
    const auto several = sizes.first(std::min(sizes.size(), InterleavedInflater::laneCount));
    if (nextBlock_ < nextBlockToInterleave_ || several.size() < 2)
        return false;
    if (!interleavedInflater_)
        interleavedInflater_ = std::make_unique<InterleavedInflater>();
    fetch(several.front(), std::accumulate(several.begin(), several.end(), std::uint64_t{0}));
    const std::size_t roomSize = table_.largestBlockByteCount() + InterleavedInflater::writeSlack;
    inflated_.resize(std::max(inflated_.size(), several.size() * roomSize));

    std::array<InterleavedInflater::Stream, InterleavedInflater::laneCount> streams;
    std::span<const std::uint8_t> rest(fetched_.get(), fetchedSize_);
    std::size_t count = 0;
    for (; count < several.size() && several[count] <= rest.size(); ++count) {
        const auto room = std::span(inflated_).subspan(count * roomSize, table_.blockByteCount(nextBlock_ + count));
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
    return std::min(table_.blockByteCount(nextBlock_), Inflater::largestOutput(table_.compressedSizes()[nextBlock_]));
}

std::size_t VtkZLibDataInputStream::inflateNextBlock(std::span<std::uint8_t> room) {
    if (!inflater_)
        inflater_ = std::make_unique<Inflater>();
    const std::uint64_t compressedSize = table_.compressedSizes()[nextBlock_];
    std::span<const std::uint8_t> compressed = fetchedSize_ == 0 ? source_->peek() : std::span<const std::uint8_t>();
    const bool isFetched = compressed.size() < compressedSize;
    while (isFetched && fetchedSize_ < compressedSize)
        fetch(compressedSize, compressedSize);
    if (isFetched)
        compressed = {fetched_.get(), fetchedSize_};
    const std::size_t byteCount = inflater_->inflate(compressed.first(compressedSize), room);
    if (damagedBlock_ == DamagedBlock::refused &&
        (!inflater_->wasSound() || byteCount != table_.blockByteCount(nextBlock_)))
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
        fetched_ = std::make_unique_for_overwrite<std::uint8_t[]>(blockCount * table_.largestCompressedSize() +
                                                                  InterleavedInflater::readSlack);
    }
    if (fetchedSize_ < least)
        fetchedSize_ += dataio::readSome(*source_, fetched_.get() + fetchedSize_, most - fetchedSize_);
    std::fill_n(fetched_.get() + fetchedSize_, InterleavedInflater::readSlack, std::uint8_t{0});
}

/// Goes on to the block that comes after the next `count`.
void VtkZLibDataInputStream::passBlocks(std::size_t count) {
    const auto passed = table_.compressedSizes().subspan(nextBlock_, count);
    nextBlock_ += count;
    const std::uint64_t byteCount = std::accumulate(passed.begin(), passed.end(), std::uint64_t{0});
    if (fetchedSize_ > 0) {
        fetchedSize_ -= byteCount;
        std::memmove(fetched_.get(), fetched_.get() + byteCount, fetchedSize_);
    }
}

void VtkZLibDataInputStream::close() {
    size_ = position_;
    nextBlock_ = table_.blockCount();
    source_->close();
    ready_ = {};
    inflated_ = {};
    fetched_.reset();
    fetchedSize_ = 0;
}

} // namespace veltra::vtkfile
