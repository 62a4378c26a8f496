/// Values of a file that krohost reads itself.
#pragma once

#include "krohost/convert/Grid.h"
#include "krohost/reader/Document.h"
#include "krohost/reader/IntegerReader.h"
#include "krohost/reader/pieceArrays.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace krohost::convert {

/// The version of the file's format, major and minor; 0 when the file says none. Throws WriteError where that, the byte
/// order or the width of header words is not known, because these decide how values are read.
std::pair<int, int> knownVersion(const reader::Document& document);

/// Hands out the first values of an array, whose type is known, as they are. Throws WriteError for the first thing that
/// is wrong with them, also where there are fewer, and Interrupted.
void produceValues(const reader::Document& document, const reader::Array& array, std::uint64_t valueCount,
                   const Sink& sink);

/// How many tuples field data hold, which their tags need not say; `limit + 1` where that is more than the limit. 0
/// where they are not sound: what cannot be decoded, is no whole number of tuples or less than its tag says. Throws
/// Interrupted.
std::uint64_t heldTupleCount(const reader::Document& document, const reader::Array& array, std::uint64_t limit);

struct Cell {
    std::uint8_t type = 0;
    std::uint64_t nodeCount = 0;
};

/// The cells of a piece, one after the other. Throws WriteError when they are not there or not sound, and Interrupted.
/// Refers to the document. Values that no cell needs are passed over, here and below.
class CellReader {
public:
    CellReader(const reader::Document& document, const reader::Piece& piece);

    /// The next cell; nothing after the last that the piece has.
    std::optional<Cell> next();

private:
    /// Throws when one of the first values is not right.
    void requireSound(const reader::IntegerReader& reader, const char* name) const;

    const reader::Document& document_;
    std::uint64_t cellCount_, leftCount_;
    std::optional<reader::IntegerReader> types_, offsets_; // of a piece with cells
    std::int64_t lastOffset_ = 0;
};

/// The node numbers of a piece with cells, one after the other. Throws as above, also where there are too few.
class NodeReader {
public:
    NodeReader(const reader::Document& document, const reader::Piece& piece);

    std::uint64_t next();

private:
    const reader::Document& document_;
    reader::IntegerReader nodes_;
};

} // namespace krohost::convert
