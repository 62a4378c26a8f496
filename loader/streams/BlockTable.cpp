#include "loader/streams/BlockTable.h"

#include "loader/streams/Inflater.h"
#include "loader/streams/VtkXMLDataHeader.h"
#include "loader/streams/byteOrder.h"
#include "loader/streams/messages.h"

#include "loader/sdk/exceptions.h"

#include <limits>

namespace veltra::vtkfile {

BlockTable::BlockTable(dataio::InputStreamInterface& source, const DataArray& array) {
    const auto readWord = [&] { return readDataHeader(source, needsSwap(array.bigEndian), array.headerSize)->value(); };
    const std::uint64_t count = readWord();
    blockSize_ = readWord();
    lastBlockSize_ = readWord();
    if (count == 0)
        return;
    auto available = static_cast<std::uint64_t>(source.available());
    if (count > available / array.headerSize)
        throw IOException(blockTableBeyondFile(array, count, available));
    if (blockSize_ == 0 && count > 1) // a table that takes time and gives nothing
        throw IOException(blocksWithoutBytes(array, count));

    available -= count * array.headerSize;
    const std::uint64_t room = available;
    compressedSizes_.reserve(count);
    for (std::uint64_t block = 0; block < count; ++block) {
        const std::uint64_t size = readWord();
        if (size > available)
            throw IOException(compressedBlocksBeyondFile(array, available));
        available -= size;
        largestCompressedSize_ = std::max(largestCompressedSize_, size);
        compressedSizes_.push_back(size);
    }

    // The sum over the blocks, all but the last of which are full.
    if (__builtin_mul_overflow(count - 1, blockSize_, &byteCount_) ||
        __builtin_add_overflow(byteCount_, blockByteCount(count - 1), &byteCount_) ||
        byteCount_ > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        throw IOException(inflatedSizeOverflow(array, count, blockSize_));
    const std::uint64_t compressedByteCount = room - available;
    if (byteCount_ > Inflater::largestOutput(compressedByteCount))
        throw IOException(inflatedSizeImplausible(array, byteCount_, compressedByteCount));
}

} // namespace veltra::vtkfile
