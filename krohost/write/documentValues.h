/// Values of a file that krohost reads itself.
#pragma once

#include "krohost/vtu/Document.h"
#include "krohost/write/Grid.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace krohost::write {

/// Hands out the array's values as they are. Throws WriteError for the first thing that is wrong with them.
void produceValues(const vtu::Document& document, const vtu::Array& array, const Sink& sink);

/// The same, one after the other as integers.
void forEachInteger(const vtu::Document& document, const vtu::Array& array,
                    const std::function<void(std::int64_t)>& use);

/// The type and the number of nodes of every cell of a piece. Throws WriteError when they are not there or not sound.
struct PieceCells {
    const vtu::Array* connectivity = nullptr;
    std::vector<std::uint8_t> types;
    std::vector<std::int64_t> offsets; ///< where each cell's nodes end

    std::int64_t nodeCount(std::size_t cell) const { return offsets[cell] - (cell == 0 ? 0 : offsets[cell - 1]); }
};
PieceCells readCells(const vtu::Document& document, const vtu::Piece& piece);

} // namespace krohost::write
