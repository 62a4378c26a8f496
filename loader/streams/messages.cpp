#include "loader/streams/messages.h"

#include "loader/sdk/format.h"
#include "loader/sdk/messages.h"

#include <limits>

namespace veltra::vtkfile {

std::string quotedName(const DataArray& array) {
    return "DataArray \"" + (array.name ? excerpt(*array.name) : std::string()) + "\"";
}

std::string dataBeyondFile(const DataArray& array, std::uint64_t claimedByteCount, std::uint64_t byteCount) {
    return (format("%1% claims %2% bytes of data but the file holds no more than %3% for it") % quotedName(array) %
            claimedByteCount % byteCount)
        .str();
}

std::string blockTableBeyondFile(const DataArray& array, std::uint64_t blockCount, std::uint64_t byteCount) {
    return (format("%1% claims %2% compressed blocks but the file holds no more than %3% bytes for it") %
            quotedName(array) % blockCount % byteCount)
        .str();
}

std::string compressedBlocksBeyondFile(const DataArray& array, std::uint64_t byteCount) {
    return (format("%1% claims more compressed data than the %2% bytes that the file holds for it") %
            quotedName(array) % byteCount)
        .str();
}

std::string blocksWithoutBytes(const DataArray& array, std::uint64_t blockCount) {
    return (format("%1% claims %2% compressed blocks that inflate to nothing") % quotedName(array) % blockCount).str();
}

std::string inflatedSizeOverflow(const DataArray& array, std::uint64_t blockCount, std::uint64_t blockByteCount) {
    return (format("%1% claims %2% blocks of %3% bytes, more than any memory holds") % quotedName(array) % blockCount %
            blockByteCount)
        .str();
}

std::string inflatedSizeImplausible(const DataArray& array, std::uint64_t claimedByteCount,
                                    std::uint64_t compressedByteCount) {
    return (format("%1% claims that its %2% compressed bytes inflate to %3%, more than they can") % quotedName(array) %
            compressedByteCount % claimedByteCount)
        .str();
}

std::string arrayOutsideFile(const DataArray& array, std::uint64_t byteCount) {
    return (format("%1% claims to begin at byte %2% but the file holds only %3%") % quotedName(array) % array.offset %
            byteCount)
        .str();
}

std::string tooManyComponents(const DataArray& array) {
    return (format("%1% has %2% components, more than the %3% that are supported") % quotedName(array) %
            array.numberOfComponents % std::numeric_limits<short>::max())
        .str();
}

std::string valueCountOverflow(const DataArray& array) {
    return (format("%1% would have %2% tuples of %3% components, more than any file holds") % quotedName(array) %
            array.numberOfTuples % array.numberOfComponents)
        .str();
}

std::string valueCountMismatch(const DataArray& array, std::uint64_t neededCount, std::uint64_t heldCount) {
    return (format("%1% holds %2% values but %3% are needed") % quotedName(array) % heldCount % neededCount).str();
}

std::string textTooShort(const DataArray& array, std::uint64_t neededCount) {
    return (format("%1% holds %2% bytes of text, too few for the %3% values that are needed") % quotedName(array) %
            array.length % neededCount)
        .str();
}

std::string notAnIntegerArray(const DataArray& array) {
    return quotedName(array) + " holds floating-point numbers where integers are needed";
}

} // namespace veltra::vtkfile
