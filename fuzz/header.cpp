// The header word of plain arrays and the block table of compressed ones, over the first three bytes as settings.
// What is announced is added up in numbers that cannot overflow.

#include "fuzz/fuzz.h"

#include "loader/streams/VtkDataInputStream.h"
#include "loader/streams/VtkZLibDataInputStream.h"

#include "loader/sdk/ByteInputStream.h"
#include "loader/sdk/exceptions.h"

#include <limits>
#include <optional>

namespace {

using namespace veltra::vtkfile;
__extension__ using Wide = unsigned __int128;

class Words {
public:
    Words(fuzz::Bytes bytes, const DataArray& array) : bytes_(bytes), array_(array) {}

    std::optional<Wide> next() {
        if (bytes_.size() < array_.headerSize)
            return std::nullopt;
        Wide word = 0;
        for (std::size_t place = 0; place < array_.headerSize; ++place) {
            const std::size_t significance = array_.bigEndian ? array_.headerSize - 1 - place : place;
            word |= Wide{bytes_[place]} << (8 * significance);
        }
        bytes_ = bytes_.subspan(array_.headerSize);
        return word;
    }
    std::size_t byteCount() const { return bytes_.size(); }

private:
    fuzz::Bytes bytes_;
    const DataArray& array_;
};

/// The bytes that a plain array announces; nothing when it is to be refused.
std::optional<Wide> plainByteCount(Words words) {
    const auto byteCount = words.next();
    return byteCount && *byteCount <= words.byteCount() ? byteCount : std::nullopt;
}

/// The same for the inflated bytes of a compressed one.
std::optional<Wide> inflatedByteCount(Words words, std::size_t wordByteCount) {
    const auto blockCount = words.next(), blockByteCount = words.next(), lastByteCount = words.next();
    if (!lastByteCount)
        return std::nullopt;
    if (*blockCount == 0)
        return 0;
    if (*blockCount * wordByteCount > words.byteCount())
        return std::nullopt;
    if (*blockByteCount == 0 && *blockCount > 1)
        return std::nullopt;
    Wide compressed = 0;
    for (Wide block = 0; block < *blockCount; ++block)
        compressed += *words.next();
    if (compressed > words.byteCount())
        return std::nullopt;
    // No more blocks than the input has bytes: the product fits.
    const Wide sum = (*blockCount - 1) * *blockByteCount + (*lastByteCount == 0 ? *blockByteCount : *lastByteCount);
    const bool fits = sum <= static_cast<Wide>(std::numeric_limits<std::int64_t>::max());
    return fits && sum <= compressed * 1032 ? std::optional(sum) : std::nullopt;
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    DataArray array;
    array.name = std::make_shared<const std::string>("a");
    array.format = DataArrayFormat::Appended;
    array.appendedRaw = true;
    array.headerSize = input.flag() ? 8 : 4;
    array.bigEndian = input.flag();
    const std::uint8_t kind = input.byte();
    array.compressor = kind % 2 == 1 ? Compressor::ZLib : Compressor::None;
    array.type = static_cast<DataArrayType>(kind / 2 % dataArrayTypeCount);

    const auto stored =
        std::make_shared<veltra::dataio::ByteInputStream::Bytes>(input.rest().begin(), input.rest().end());
    const auto stream = std::make_shared<veltra::dataio::ByteInputStream>(stored);
    const Words words(input.rest(), array);
    const auto byteCount =
        array.compressor == Compressor::ZLib ? inflatedByteCount(words, array.headerSize) : plainByteCount(words);
    std::uint64_t valueCount = 0;
    try {
        if (array.compressor == Compressor::ZLib)
            VtkZLibDataInputStream(stream, array, valueCount);
        else
            VtkDataInputStream(stream, array, valueCount);
    } catch (const veltra::IOException& failure) {
        require(!byteCount, "only what the file cannot hold is refused");
        return sentence(failure.what());
    }
    require(byteCount.has_value(), "what the file cannot hold is refused");
    require(valueCount == *byteCount / elementByteCount(array.type), "the values are those announced");
    return array.compressor == Compressor::ZLib ? "blocks" : "plain";
}
