#include "loader/streams/heldValueCount.h"

#include "loader/streams/VtkXMLDataHeader.h"
#include "loader/streams/byteOrder.h"

#include "loader/sdk/Base64InputStream.h"
#include "loader/sdk/FileInputStream.h"

namespace veltra::vtkfile {

std::uint64_t heldValueCount(const FilePtr& file, const DataArray& array) {
    dataio::InputStreamPtr stream = std::make_shared<dataio::FileInputStream>(file);
    stream->skip(array.offset);
    if (array.format != DataArrayFormat::Appended || !array.appendedRaw)
        stream = std::make_shared<dataio::Base64InputStream>(std::move(stream));
    const auto readWord = [&] {
        return readDataHeader(*stream, needsSwap(array.bigEndian), array.headerSize)->value();
    };
    std::uint64_t byteCount = readWord();
    if (array.compressor == Compressor::ZLib && byteCount > 0) {
        const std::uint64_t fullBlockCount = byteCount - 1, blockSize = readWord(), lastBlockSize = readWord();
        if (__builtin_mul_overflow(fullBlockCount, blockSize, &byteCount) ||
            __builtin_add_overflow(byteCount, lastBlockSize == 0 ? blockSize : lastBlockSize, &byteCount))
            return 0;
    }
    return byteCount / elementByteCount(array.type);
}

} // namespace veltra::vtkfile
