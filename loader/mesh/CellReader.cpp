#include "loader/mesh/CellReader.h"

#include "loader/streams/elementTypes.h"
#include "loader/streams/messages.h"
#include "loader/streams/readValues.h"

#include "loader/sdk/exceptions.h"

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

/// The difference of two numbers from a file may wrap; whoever uses it finds out.
std::int64_t difference(std::int64_t offset, std::int64_t previous) {
    std::int64_t wrapped = 0;
    static_cast<void>(__builtin_sub_overflow(offset, previous, &wrapped));
    return wrapped;
}

constexpr std::size_t stride = 32;

/// Whether the next cells, as many as a stride, are all of this kind. Another offset is before the first.
bool areAlike(const VtkCell::Type* types, const std::int64_t* offsets, VtkCell::Type type, std::int64_t nodeCount) {
    const std::int64_t* previous = offsets - 1;
    unsigned differentTypes = 0;
    std::uint64_t differentCounts = 0;
    for (std::size_t cell = 0; cell < stride; ++cell)
        differentTypes |= static_cast<unsigned>(types[cell]) ^ static_cast<unsigned>(type);
    for (std::size_t cell = 0; cell < stride; ++cell)
        differentCounts |= static_cast<std::uint64_t>(difference(offsets[cell], previous[cell]) ^ nodeCount);
    return (differentTypes | differentCounts) == 0;
}

} // namespace

CellReader::CellReader(const FilePtr& file, const CellArrays& arrays, std::uint64_t cellCount)
    : arrays_(arrays), typesReader_(openDataArrayOf(file, arrays.types, cellCount)),
      offsetsReader_(openDataArrayOf(file, arrays.offsets, cellCount)), unreadCount_(cellCount) {
    const std::size_t blockSize = std::min<std::uint64_t>(blockCellCount, cellCount);
    types_ = std::make_unique_for_overwrite<VtkCell::Type[]>(blockSize);
    offsets_ = std::make_unique_for_overwrite<std::int64_t[]>(blockSize);
}

bool CellReader::nextBlock(std::vector<CellRun>& runs) {
    if (unreadCount_ == 0)
        return false;
    const std::size_t cellCount = std::min<std::uint64_t>(blockCellCount, unreadCount_);
    readBlock(cellCount);
    findRuns(runs, cellCount);
    return true;
}

void CellReader::readBlock(std::size_t cellCount) {
    readTypes(*typesReader_, arrays_.types, types_.get(), cellCount);
    readIntegers(*offsetsReader_, arrays_.offsets, offsets_.get(), cellCount);
    unreadCount_ -= cellCount;
}

void CellReader::findRuns(std::vector<CellRun>& runs, std::size_t cellCount) {
    runs.clear();
    for (std::size_t begin = 0; begin < cellCount;) {
        const VtkCell::Type type = types_[begin];
        const std::int64_t nodeCount = difference(offsets_[begin], previousOffset_);
        std::size_t end = begin + 1;
        // Most runs are long: as long as all cells of a stride fit, they are compared without a branch between them.
        while (end + stride <= cellCount && areAlike(&types_[end], &offsets_[end], type, nodeCount))
            end += stride;
        while (end < cellCount && types_[end] == type && difference(offsets_[end], offsets_[end - 1]) == nodeCount)
            ++end;
        runs.push_back({type, nodeCount, end - begin});
        previousOffset_ = offsets_[end - 1];
        begin = end;
    }
}

} // namespace veltra::vtkfile
