#include "mesh/CellReader.h"

#include "streams/dataArrayReader.h"
#include "streams/elementTypes.h"
#include "streams/messages.h"
#include "streams/readValues.h"

#include "host/exceptions.h"

#include <algorithm>
#include <type_traits>

namespace veltra::vtkfile {

namespace {

void readTypes(StreamReader& reader, const DataArray& array, VtkCell::Type* dst, std::size_t cellCount) {
    visitElementType(array.type, [&]<class Src>(std::type_identity<Src>) {
        if constexpr (std::is_integral_v<Src>)
            reader.readValues<VtkCell::Type, Src>(dst, cellCount, 1, 0);
        else
            throw IOException(notAnIntegerArray(array));
    });
}

} // namespace

CellReader::CellReader(const CellArrays& arrays, std::uint64_t cellCount)
    : arrays_(arrays), typesReader_(openDataArrayOf(arrays.types, cellCount)),
      offsetsReader_(openDataArrayOf(arrays.offsets, cellCount)), unreadCount_(cellCount) {}

bool CellReader::nextBlock(std::vector<CellRun>& runs) {
    if (unreadCount_ == 0)
        return false;
    const std::size_t cellCount = std::min<std::uint64_t>(blockCellCount, unreadCount_);
    readBlock(cellCount);
    findRuns(runs, cellCount);
    if (unreadCount_ == 0)
        checkEnd();
    return true;
}

void CellReader::readBlock(std::size_t cellCount) {
    readTypes(*typesReader_, arrays_.types, types_.data(), cellCount);
    readIntegers(*offsetsReader_, arrays_.offsets, offsets_.data(), cellCount);
    unreadCount_ -= cellCount;
}

void CellReader::findRuns(std::vector<CellRun>& runs, std::size_t cellCount) {
    runs.clear();
    for (std::size_t cell = 0; cell < cellCount; ++cell) {
        // The difference of two numbers from a file may wrap; whoever uses it finds out.
        const auto nodeCount = static_cast<std::int64_t>(static_cast<std::uint64_t>(offsets_[cell]) -
                                                         static_cast<std::uint64_t>(previousOffset_));
        previousOffset_ = offsets_[cell];
        if (!runs.empty() && runs.back().type == types_[cell] && runs.back().nodeCount == nodeCount)
            ++runs.back().cellCount;
        else
            runs.push_back({types_[cell], nodeCount, 1});
    }
}

void CellReader::checkEnd() {
    if (!typesReader_->isTextExhausted())
        throw IOException(textTooLong(arrays_.types, arrays_.types.numberOfTuples));
    if (!offsetsReader_->isTextExhausted())
        throw IOException(textTooLong(arrays_.offsets, arrays_.offsets.numberOfTuples));
}

} // namespace veltra::vtkfile
