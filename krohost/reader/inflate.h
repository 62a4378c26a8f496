#pragma once

#include "krohost/reader/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace krohost::reader {

/// The most bytes that one compressed byte can stand for.
std::uint64_t largestRatio(Compressor compressor);

/// Whether a block of these sizes can be read: LZ4 blocks are in memory as a whole.
bool isBlockReadable(Compressor compressor, std::uint64_t compressedByteCount, std::uint64_t expectedByteCount);

struct Inflated {
    std::uint64_t byteCount = 0; ///< more than expected when the block was not at its end there
    bool isDamaged = false;
};

/// What a compressed block inflates to, a part at a time.
class BlockReader {
public:
    virtual ~BlockReader() = default;

    /// Fills `bytes` from its beginning; gives how many came, none only at the block's end or its damage.
    virtual std::size_t read(std::span<std::byte> bytes) = 0;
    /// Looks for what comes after the bytes that were read, and passes over the rest of the block in its source.
    virtual Inflated finish() = 0;
};

/// A block of `compressedByteCount` bytes of the source, which inflates to `expectedByteCount`; the caller has made
/// sure that it can and is readable. Refers to the source.
std::unique_ptr<BlockReader> openBlock(Compressor compressor, ByteSource& source, std::uint64_t compressedByteCount,
                                       std::uint64_t expectedByteCount);

} // namespace krohost::reader
