#pragma once

#include "krohost/vtu/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace krohost::vtu {

/// The most bytes that one compressed byte can stand for.
std::uint64_t largestRatio(Compressor compressor);

struct Inflated {
    std::uint64_t byteCount = 0; ///< more than expected when the block was not at its end there
    bool isDamaged = false;
};

/// Takes a block of `compressedByteCount` bytes from the source and hands on what it inflates to, `expectedByteCount`
/// at most, of which the caller has made sure that it is plausible. Takes the whole block, whatever is in it.
Inflated inflateBlock(Compressor compressor, ByteSource& source, std::uint64_t compressedByteCount,
                      std::uint64_t expectedByteCount, const std::function<void(std::span<const std::byte>)>& sink);

} // namespace krohost::vtu
