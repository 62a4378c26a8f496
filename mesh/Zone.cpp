#include "mesh/Zone.h"

#include "mesh/messages.h"

#include "streams/dataArrayReader.h"

#include "host/exceptions.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <limits>
#include <locale>

namespace veltra::vtkfile {

namespace {

bool equalsIgnoringCase(const std::string& left, const std::string& right) {
    return boost::algorithm::iequals(left, right, std::locale::classic());
}

/// The host counts in signed 64 bits.
std::uint64_t sum(const std::vector<Piece>& pieces, std::uint64_t Piece::*count, const char* overflowMessage) {
    std::uint64_t total = 0;
    for (const Piece& piece : pieces)
        if (__builtin_add_overflow(total, piece.*count, &total) || total > std::numeric_limits<std::int64_t>::max())
            throw IOException(overflowMessage);
    return total;
}

void checkVariables(const Piece& first, const Piece& other) {
    if (other.variables.size() != first.variables.size())
        throw IOException(inconsistentPieces);
    for (std::size_t index = 0; index < first.variables.size(); ++index)
        if (!findVariable(first, index, other))
            throw IOException(inconsistentPieces);
}

} // namespace

std::uint64_t nodeCount(const Zone& zone) {
    return sum(zone.pieces, &Piece::numberOfPoints, tooManyNodes);
}

std::uint64_t cellCount(const Zone& zone) {
    return sum(zone.pieces, &Piece::numberOfCells, tooManyCells);
}

void checkPieces(const Zone& zone) {
    gridVariableCount(zone);
    for (const Piece& piece : zone.pieces)
        cellArrays(piece);
    for (std::size_t index = 1; index < zone.pieces.size(); ++index)
        checkVariables(zone.pieces.front(), zone.pieces[index]);
}

void checkPoints(const Zone& zone) {
    for (const Piece& piece : zone.pieces)
        checkValueCount(piece.points);
}

std::uint16_t gridVariableCount(const Zone& zone) {
    if (zone.pieces.empty())
        return 0;
    const std::uint16_t count = zone.pieces.front().points.numberOfComponents;
    if (count < 1 || count > 3)
        throw IOException(badGridVariableCount);
    if (std::any_of(zone.pieces.begin(), zone.pieces.end(),
                    [&](const Piece& piece) { return piece.points.numberOfComponents != count; }))
        throw IOException(differentGridVariableCounts);
    return count;
}

CellArrays cellArrays(const Piece& piece) {
    const auto named = [&](const char* name) -> const DataArray& {
        const auto found = std::find_if(piece.cells.begin(), piece.cells.end(),
                                        [&](const DataArray& array) { return equalsIgnoringCase(*array.name, name); });
        if (found == piece.cells.end())
            throw IOException(badCellArrays);
        return *found;
    };
    if (piece.cells.size() != 3)
        throw IOException(badCellArrays);
    return {named("connectivity"), named("offsets"), named("types")};
}

const DataArray* findVariable(const Piece& first, std::size_t index, const Piece& piece) {
    const DataArray& array = first.variables[index];
    const auto continues = [&](const DataArray& candidate) {
        return candidate.type == array.type && candidate.valueLocation == array.valueLocation &&
               equalsIgnoringCase(*candidate.name, *array.name);
    };
    // Writers keep the order of arrays from piece to piece.
    if (index < piece.variables.size() && continues(piece.variables[index]))
        return &piece.variables[index];
    const auto found = std::find_if(piece.variables.begin(), piece.variables.end(), continues);
    return found == piece.variables.end() ? nullptr : &*found;
}

} // namespace veltra::vtkfile
