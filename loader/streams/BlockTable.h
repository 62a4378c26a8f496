#pragma once

#include "loader/sdk/InputStreamInterface.h"
#include "loader/xml/DataArray.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace veltra::vtkfile {

/// The header words of compressed data: how many blocks there are, and how large each is. [any thread]
class BlockTable {
public:
    /// Reads the table, at whose beginning `source` is. Throws IOException when it or the blocks that it announces do
    /// not fit what `source` can hold, or when the blocks cannot inflate to what it claims.
    BlockTable(dataio::InputStreamInterface& source, const DataArray& array);

    std::uint64_t blockCount() const { return compressedSizes_.size(); }
    /// Bytes that a block inflates to.
    std::uint64_t blockByteCount(std::uint64_t block) const {
        return lastBlockSize_ != 0 && block + 1 == blockCount() ? lastBlockSize_ : blockSize_;
    }
    std::uint64_t largestBlockByteCount() const { return std::max(blockSize_, lastBlockSize_); }
    /// Bytes that all blocks inflate to.
    std::uint64_t byteCount() const { return byteCount_; }

    /// Bytes of each block in the file.
    std::span<const std::uint64_t> compressedSizes() const { return compressedSizes_; }
    std::uint64_t largestCompressedSize() const { return largestCompressedSize_; }

private:
    std::uint64_t blockSize_ = 0;
    std::uint64_t lastBlockSize_ = 0; // 0 when the last block is full
    std::uint64_t byteCount_ = 0;
    std::uint64_t largestCompressedSize_ = 0;
    std::vector<std::uint64_t> compressedSizes_;
};

} // namespace veltra::vtkfile
