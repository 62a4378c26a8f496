#pragma once

#include "loader/streams/BlockTable.h"
#include "loader/streams/Inflater.h"
#include "loader/streams/InterleavedInflater.h"

#include "loader/sdk/InputStreamInterface.h"
#include "loader/xml/DataArray.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace veltra::vtkfile {

/// What is made of a block that does not inflate to what its array's block table says.
enum class DamagedBlock {
    passedOver, ///< in silence
    refused     ///< with an IOException, wherever the damage can be seen
};

/// The inflated bytes of an array that is stored in zlib blocks.
///
/// Blocks are inflated as they are read: a few at once where that is faster, others straight into the caller's buffer
/// where a whole one fits. Where a damaged block that yields too little is passed over, the bytes of the blocks after
/// it move up, and the missing bytes at the array's end are zero.
class VtkZLibDataInputStream final : public dataio::InputStreamInterface {
public:
    /// `source` is at the array's first header word. Reads the block table, inflates nothing. `valueCount` receives
    /// the whole values that the inflated data hold. Throws IOException when the table or the blocks it announces do
    /// not fit what `source` can hold, or when the blocks cannot inflate to what the table claims.
    VtkZLibDataInputStream(dataio::InputStreamPtr source, const DataArray& array, std::uint64_t& valueCount,
                           DamagedBlock damagedBlock = DamagedBlock::passedOver);

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    void skip(std::size_t byteCount) override;
    std::span<const std::uint8_t> peek() override;
    std::int64_t available() override { return static_cast<std::int64_t>(size_ - position_); }
    std::uint64_t position() override { return position_; }
    void close() override;

private:
    bool areBlocksSmall() const;
    std::size_t deliver(std::span<std::uint8_t> dst);
    std::span<const std::uint8_t>& ready();
    void fill();
    bool inflateSeveral();
    std::size_t inflateNextBlock(std::span<std::uint8_t> room);
    std::uint64_t roomForNextBlock() const;
    void fetch(std::uint64_t least, std::uint64_t most);
    void passBlocks(std::size_t count);

    dataio::InputStreamPtr source_;
    BlockTable table_;
    DamagedBlock damagedBlock_;
    std::uint64_t size_; // of the inflated bytes; after close, of those that were read

    std::uint64_t position_ = 0;
    std::uint64_t nextBlock_ = 0;
    std::uint64_t nextBlockToInterleave_ = 0;
    std::unique_ptr<Inflater> inflater_;
    std::unique_ptr<InterleavedInflater> interleavedInflater_;
    std::unique_ptr<std::uint8_t[]> fetched_; // compressed bytes from the next block on
    std::uint64_t fetchedSize_ = 0;
    std::vector<std::uint8_t> inflated_; // where the bytes are that are ready
    std::array<std::span<const std::uint8_t>, InterleavedInflater::laneCount> ready_; // not yet delivered, by blocks
};

} // namespace veltra::vtkfile
