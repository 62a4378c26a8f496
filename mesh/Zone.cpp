#include "mesh/Zone.h"

#include "mesh/messages.h"

#include "streams/dataArrayReader.h"

#include "host/exceptions.h"
#include "xml/equalsIgnoringCase.h"

#include <boost/algorithm/string/case_conv.hpp>

#include <algorithm>
#include <limits>
#include <locale>
#include <map>
#include <optional>
#include <tuple>

namespace veltra::vtkfile {

namespace {

/// The host counts in signed 64 bits.
std::uint64_t sum(const std::vector<Piece>& pieces, std::uint64_t Piece::*count, const char* overflowMessage) {
    std::uint64_t total = 0;
    for (const Piece& piece : pieces)
        if (__builtin_add_overflow(total, piece.*count, &total) || total > std::numeric_limits<std::int64_t>::max())
            throw IOException(overflowMessage);
    return total;
}

bool continues(const DataArray& array, const DataArray& other) {
    return other.type == array.type && other.valueLocation == array.valueLocation &&
           equalsIgnoringCase(*other.name, *array.name);
}

/// Finds the arrays of a piece by what must agree between pieces.
class VariableIndex {
public:
    explicit VariableIndex(const Piece& piece) {
        for (const DataArray& array : piece.variables)
            arrays_.emplace(keyOf(array), &array);
    }

    const DataArray* find(const DataArray& array) const {
        const auto found = arrays_.find(keyOf(array));
        return found == arrays_.end() ? nullptr : found->second;
    }

private:
    using Key = std::tuple<ValueLocation_e, DataArrayType, std::string>;

    static Key keyOf(const DataArray& array) {
        return {array.valueLocation, array.type, boost::algorithm::to_lower_copy(*array.name, std::locale::classic())};
    }

    std::map<Key, const DataArray*> arrays_;
};

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
        matchVariables(zone.pieces.front(), zone.pieces[index]);
}

void checkPoints(const FilePtr& file, const Zone& zone) {
    for (const Piece& piece : zone.pieces)
        checkValueCount(file, piece.points);
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

std::vector<const DataArray*> matchVariables(const Piece& first, const Piece& piece) {
    if (piece.variables.size() != first.variables.size())
        throw IOException(inconsistentPieces);
    std::vector<const DataArray*> matches;
    std::optional<VariableIndex> index; // needed only when a writer has changed the order
    for (std::size_t place = 0; place < first.variables.size(); ++place) {
        const DataArray& array = first.variables[place];
        const DataArray* match = &piece.variables[place];
        if (!continues(array, *match)) {
            if (!index)
                index.emplace(piece);
            match = index->find(array);
        }
        if (!match)
            throw IOException(inconsistentPieces);
        matches.push_back(match);
    }
    return matches;
}

bool isEmpty(const Zone& zone) {
    return std::all_of(zone.pieces.begin(), zone.pieces.end(),
                       [](const Piece& piece) { return piece.numberOfPoints == 0 && piece.numberOfCells == 0; });
}

} // namespace veltra::vtkfile
