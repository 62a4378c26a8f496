#pragma once

#include "loader/mesh/VtkCell.h"
#include "loader/mesh/Zone.h"

#include "loader/streams/dataArrayReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace veltra::vtkfile {

/// Consecutive cells of one type with one number of nodes.
struct CellRun {
    VtkCell::Type type;
    std::int64_t nodeCount; ///< as the offsets give it, which may be no number that cells can have
    std::size_t cellCount;
};

/// Reads the cells of a piece from its "types" and "offsets" arrays, a block at a time. One thread per reader.
class CellReader {
public:
    /// For both arrays of a piece of `cellCount` cells. Throws IOException when either holds fewer values.
    CellReader(const FilePtr& file, const CellArrays& arrays, std::uint64_t cellCount);

    /// Gives the runs of the next block of cells, the first of which may continue the block before; false after the
    /// last block. Throws what StreamReader::readValues throws.
    bool nextBlock(std::vector<CellRun>& runs);

private:
    static constexpr std::size_t blockCellCount = 0x4000;

    void readBlock(std::size_t cellCount);
    void findRuns(std::vector<CellRun>& runs, std::size_t cellCount);

    const CellArrays& arrays_;
    std::unique_ptr<StreamReader> typesReader_;
    std::unique_ptr<StreamReader> offsetsReader_;
    std::uint64_t unreadCount_;
    std::int64_t previousOffset_ = 0;        // of the cell before the block
    std::unique_ptr<VtkCell::Type[]> types_; // of the cells of a block
    std::unique_ptr<std::int64_t[]> offsets_;
};

} // namespace veltra::vtkfile
