#include "krohost/check/arrayChecks.h"
#include "krohost/check/documentChecks.h"
#include "krohost/reader/inflate.h"
#include "krohost/reader/narrowing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace krohost::check {

namespace {

using reader::Array;
using reader::Piece;

/// What keeps a piece's arrays from continuing those of the first piece; empty when nothing does. Unequal numbers are
/// enough, so that the work for each piece is in proportion to its own size.
std::string difference(const std::vector<Array>& first, const std::vector<Array>& arrays, const char* where) {
    if (arrays.size() != first.size())
        return fmt::format("a Piece has {} arrays of {} where the first one has {}", arrays.size(), where,
                           first.size());
    const std::vector<const Array*> matches = reader::continuations(first, arrays);
    for (std::size_t place = 0; place < first.size(); ++place) {
        const Array& array = first[place];
        const Array* match = matches[place];
        if (!match || match->type != array.type)
            return fmt::format("a Piece lacks {} of the first one, or has it in another type", nameInText(array));
        if (match->componentCount < array.componentCount && match->tupleCount > 0)
            return fmt::format("a Piece has {} with {} components where the first one has {}", nameInText(array),
                               match->componentCount.value_or(0), array.componentCount.value_or(0));
    }
    return {};
}

std::string difference(const Piece& first, const Piece& piece) {
    const std::string ofPoints = difference(first.pointData, piece.pointData, "points");
    return ofPoints.empty() ? difference(first.cellData, piece.cellData, "cells") : ofPoints;
}

std::uint64_t pointByteCount(const Piece& piece) {
    std::uint64_t sum = 0;
    for (const Array& array : piece.points) {
        std::uint64_t byteCount = 0;
        if (array.type && (__builtin_mul_overflow(reader::neededValueCount(array).value_or(0),
                                                  reader::byteCount(*array.type), &byteCount) ||
                           __builtin_add_overflow(sum, byteCount, &sum)))
            return std::numeric_limits<std::uint64_t>::max();
    }
    return sum;
}

} // namespace

void checkSurplusComponents(const reader::Document& document, Findings& findings) {
    for (const reader::PiecewiseArray& array : reader::piecewiseArrays(document))
        for (const Array* part : array.parts) {
            const std::uint64_t kept = array.first().componentCount.value_or(0);
            if (part->componentCount.value_or(0) > kept && part->tupleCount > 0 && !array.isConnectivity())
                findings.warning(
                    "surplus-components", part->element.position,
                    fmt::format("{} has {} components, of which those beyond the {} of the first Piece are "
                                "not loaded",
                                nameInText(*part), *part->componentCount, kept));
        }
}

void checkPiecesAgree(const reader::Document& document, Findings& findings) {
    for (std::size_t index = 1; index < document.pieces.size(); ++index)
        if (std::string message = difference(document.pieces.front(), document.pieces[index]); !message.empty())
            findings.error("pieces-differ", document.pieces[index].element.position, std::move(message));
}

void checkPiecesFit(const reader::Document& document, Findings& findings) {
    const std::uint64_t most = document.byteCount * reader::largestRatio(reader::Compressor::zlib);
    std::uint64_t byteRoom = most, cellRoom = most;
    for (const Piece& piece : document.pieces) {
        const std::uint64_t byteCount = pointByteCount(piece), cellCount = piece.cellCount.value_or(0);
        if (byteCount > byteRoom || cellCount > cellRoom)
            return findings.error(
                "number", piece.element.position,
                fmt::format("the pieces up to here have more {} than the {} bytes of the file can hold",
                            byteCount > byteRoom ? "points" : "cells", document.byteCount));
        byteRoom -= byteCount;
        cellRoom -= cellCount;
    }
}

} // namespace krohost::check
