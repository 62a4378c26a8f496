#include "loader/streams/dataArrayReader.h"

#include "loader/streams/VtkDataInputStream.h"
#include "loader/streams/VtkZLibDataInputStream.h"
#include "loader/streams/byteOrder.h"
#include "loader/streams/elementTypes.h"
#include "loader/streams/messages.h"
#include "loader/streams/readValues.h"

#include "loader/sdk/Base64InputStream.h"
#include "loader/sdk/BufferedInputStream.h"
#include "loader/sdk/FileInputStream.h"
#include "loader/sdk/exceptions.h"

#include <algorithm>
#include <limits>

namespace veltra::vtkfile {

namespace {

constexpr std::int64_t decodedBlockByteCount = 0x4000;

/// The most that this many values usually take in a file, headers included.
std::uint64_t usualByteCount(const DataArray& array, std::uint64_t valueCount) {
    constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();
    if (valueCount > unlimited / 16)
        return unlimited;
    const std::uint64_t byteCount = valueCount * elementByteCount(array.type);
    return byteCount + byteCount / 64 + 64;
}

/// Stacks the streams over an array that is expected to take this many bytes.
std::unique_ptr<StreamReader> stackStreams(const FilePtr& file, const DataArray& array, std::uint64_t expectedByteCount,
                                           std::uint64_t& valueCount,
                                           DamagedBlock damagedBlock = DamagedBlock::passedOver) {
    const bool binary = array.format != DataArrayFormat::Ascii;
    const bool raw = array.format == DataArrayFormat::Appended && array.appendedRaw;
    dataio::InputStreamPtr stream = std::make_shared<dataio::FileInputStream>(file);
    const auto available = static_cast<std::uint64_t>(stream->available());
    if (array.offset > available)
        throw IOException(arrayOutsideFile(array, available));
    stream->skip(array.offset);

    // Text of either kind is buffered by who decodes it.
    if (raw)
        stream = std::make_shared<dataio::BufferedInputStream>(std::move(stream), dataio::fileBlockByteCount,
                                                               expectedByteCount);
    else if (binary)
        stream = std::make_shared<dataio::Base64InputStream>(std::move(stream));
    const bool inBlocks = binary && array.compressor == Compressor::ZLib;
    if (inBlocks)
        stream = std::make_shared<VtkZLibDataInputStream>(std::move(stream), array, valueCount, damagedBlock);
    else
        stream = std::make_shared<VtkDataInputStream>(std::move(stream), array, valueCount);
    if (binary && !raw && !inBlocks)
        stream = std::make_shared<dataio::BufferedInputStream>(std::move(stream), decodedBlockByteCount);
    return std::make_unique<StreamReader>(std::move(stream), binary, needsSwap(array.bigEndian));
}

/// Opens an array that is expected to take this many bytes and must hold `valueCount` values or more.
std::unique_ptr<StreamReader> openHolding(const FilePtr& file, const DataArray& array, std::uint64_t valueCount,
                                          std::uint64_t expectedByteCount) {
    std::uint64_t heldCount = 0;
    auto reader = stackStreams(file, array, expectedByteCount, heldCount);
    if (array.format != DataArrayFormat::Ascii && heldCount < valueCount)
        throw IOException(valueCountMismatch(array, valueCount, heldCount));
    return reader;
}

} // namespace

FilePtr openFile(const DataArray& array) {
    return std::make_shared<const dataio::File>(*array.file);
}

std::unique_ptr<StreamReader> openDataArrayReader(const FilePtr& file, const DataArray& array,
                                                  std::uint64_t& valueCount, DamagedBlock damagedBlock) {
    return stackStreams(file, array, std::numeric_limits<std::uint64_t>::max(), valueCount, damagedBlock);
}

std::unique_ptr<StreamReader> openDataArrayOf(const FilePtr& file, const DataArray& array, std::uint64_t valueCount) {
    return openHolding(file, array, valueCount, usualByteCount(array, valueCount));
}

std::uint64_t announcedValueCount(const DataArray& array) {
    if (array.numberOfComponents > std::numeric_limits<short>::max())
        throw IOException(tooManyComponents(array));
    std::uint64_t valueCount = 0;
    if (__builtin_mul_overflow(array.numberOfTuples, std::uint64_t{array.numberOfComponents}, &valueCount))
        throw IOException(valueCountOverflow(array));
    return valueCount;
}

void checkValueCount(const FilePtr& file, const DataArray& array) {
    const std::uint64_t valueCount = announcedValueCount(array);
    if (valueCount == 0)
        return; // such an array may lack even its header
    if (array.format != DataArrayFormat::Ascii)
        openHolding(file, array, valueCount, 3 * sizeof(std::uint64_t)); // no more than its header
    else if (valueCount > (array.length + 1) / 2)                        // a character for each, and one between two
        throw IOException(textTooShort(array, valueCount));
}

template <class Dst>
void readComponent(const FilePtr& file, const DataArray& array, std::uint16_t component, Dst* dst) {
    const std::uint64_t valueCount = announcedValueCount(array);
    if (valueCount == 0)
        return;
    const auto reader = openDataArrayOf(file, array, valueCount);
    visitElementType(array.type, [&]<class Src>(std::type_identity<Src>) {
        reader->readValues<Dst, Src>(dst, array.numberOfTuples, static_cast<short>(array.numberOfComponents),
                                     static_cast<short>(component));
    });
}

template void readComponent(const FilePtr&, const DataArray&, std::uint16_t, std::uint8_t*);
template void readComponent(const FilePtr&, const DataArray&, std::uint16_t, std::int16_t*);
template void readComponent(const FilePtr&, const DataArray&, std::uint16_t, std::int32_t*);
template void readComponent(const FilePtr&, const DataArray&, std::uint16_t, float*);
template void readComponent(const FilePtr&, const DataArray&, std::uint16_t, double*);

template <class Dst>
void readIntegers(StreamReader& reader, const DataArray& array, Dst* dst, std::size_t valueCount) {
    visitElementType(array.type, [&]<class Src>(std::type_identity<Src>) {
        if constexpr (std::is_integral_v<Src>)
            reader.readValues<Dst, Src>(dst, valueCount, 1, 0);
        else
            throw IOException(notAnIntegerArray(array));
    });
}

template void readIntegers(StreamReader&, const DataArray&, std::int32_t*, std::size_t);
template void readIntegers(StreamReader&, const DataArray&, std::int64_t*, std::size_t);

} // namespace veltra::vtkfile
