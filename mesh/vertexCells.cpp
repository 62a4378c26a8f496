#include "mesh/vertexCells.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace veltra::vtkfile {

namespace {

/// Whether the array, which has one component, holds 0, 1, 2 and so on, `count` numbers in all.
bool countsUp(const FilePtr& file, const DataArray& array, std::uint64_t count) {
    constexpr std::size_t blockSize = 0x4000;
    const auto reader = openDataArrayOf(file, array, count);
    std::vector<std::int64_t> block(std::min<std::uint64_t>(count, blockSize));
    for (std::uint64_t next = 0; next < count;) {
        const std::size_t size = std::min<std::uint64_t>(count - next, blockSize);
        readIntegers(*reader, array, block.data(), size);
        for (std::size_t index = 0; index < size; ++index)
            if (block[index] != static_cast<std::int64_t>(next++))
                return false;
    }
    return true;
}

} // namespace

bool areVerticesThePoints(const FilePtr& file, const Zone& zone) {
    return std::ranges::all_of(zone.pieces, [&](const Piece& piece) {
        return piece.numberOfCells == piece.numberOfPoints &&
               (piece.numberOfCells == 0 || countsUp(file, cellArrays(piece).connectivity, piece.numberOfCells));
    });
}

} // namespace veltra::vtkfile
