#include "loader/mesh/Zone.h"

#include "loader/mesh/messages.h"

#include "loader/streams/Inflater.h"
#include "loader/streams/dataArrayReader.h"

#include "loader/sdk/exceptions.h"
#include "loader/xml/equalsIgnoringCase.h"

#include <boost/algorithm/string/case_conv.hpp>

#include <algorithm>
#include <deque>
#include <limits>
#include <locale>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

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

/// The variables of a piece, each of which continues one of the first piece's.
class VariableMatcher {
public:
    explicit VariableMatcher(const Piece& piece) : arrays_(piece.variables), isTaken_(arrays_.size()) {
        for (std::size_t index = 0; index < arrays_.size(); ++index) {
            exact_[{arrays_[index].valueLocation, *arrays_[index].name}].push_back(index);
            similar_[similarKey(arrays_[index])].push_back(index);
        }
    }

    /// The array of just this name; null when there is none. One of another type is none that could be passed over. Of
    /// several, one with as many components takes precedence.
    const DataArray* takeNamesake(const DataArray& array) {
        const auto found = exact_.find({array.valueLocation, *array.name});
        if (found == exact_.end())
            return nullptr;
        std::optional<std::size_t> best;
        for (const std::size_t index : found->second) {
            const DataArray& other = arrays_[index];
            if (isTaken_[index] || other.type != array.type)
                continue;
            if (other.numberOfComponents == array.numberOfComponents)
                return take(index);
            best = best.value_or(index);
        }
        if (!best)
            throw IOException(inconsistentPieces);
        return take(*best);
    }

    /// The first of those whose names differ in letter case only and that nothing else has taken.
    const DataArray& takeSimilar(const DataArray& array) {
        std::deque<std::size_t>& candidates = similar_[similarKey(array)];
        while (!candidates.empty() && isTaken_[candidates.front()])
            candidates.pop_front();
        if (candidates.empty())
            throw IOException(inconsistentPieces);
        return *take(candidates.front());
    }

private:
    using ExactKey = std::pair<ValueLocation_e, std::string>;
    using SimilarKey = std::tuple<ValueLocation_e, DataArrayType, std::string>;

    static SimilarKey similarKey(const DataArray& array) {
        return {array.valueLocation, array.type, boost::algorithm::to_lower_copy(*array.name, std::locale::classic())};
    }

    const DataArray* take(std::size_t index) {
        isTaken_[index] = true;
        return &arrays_[index];
    }

    const std::vector<DataArray>& arrays_;
    std::vector<bool> isTaken_;
    std::map<ExactKey, std::vector<std::size_t>> exact_;    // in file order
    std::map<SimilarKey, std::deque<std::size_t>> similar_; // in file order
};

bool areListedAlike(const Piece& first, const Piece& piece) {
    return std::ranges::equal(first.variables, piece.variables, [](const DataArray& array, const DataArray& other) {
        return other.type == array.type && other.valueLocation == array.valueLocation && *other.name == *array.name &&
               other.numberOfComponents == array.numberOfComponents;
    });
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
        matchVariables(zone.pieces.front(), zone.pieces[index]);
}

void checkPoints(const FilePtr& file, const Zone& zone) {
    // Pieces that are plausible one by one may share their arrays.
    const std::uint64_t most = Inflater::largestOutput(file->byteCount());
    std::uint64_t byteCount = 0;
    for (const Piece& piece : zone.pieces) {
        checkValueCount(file, piece.points);
        byteCount += announcedValueCount(piece.points) * elementByteCount(piece.points.type);
        if (byteCount > most)
            throw IOException(piecesBeyondFile(file->byteCount()));
    }
    if (cellCount(zone) > most)
        throw IOException(piecesBeyondFile(file->byteCount()));
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
    if (areListedAlike(first, piece)) {
        for (const DataArray& array : piece.variables)
            matches.push_back(&array);
        return matches;
    }
    VariableMatcher matcher(piece);
    for (const DataArray& array : first.variables)
        matches.push_back(matcher.takeNamesake(array));
    for (std::size_t index = 0; index < matches.size(); ++index)
        if (!matches[index])
            matches[index] = &matcher.takeSimilar(first.variables[index]);
    return matches;
}

bool isEmpty(const Zone& zone) {
    return std::all_of(zone.pieces.begin(), zone.pieces.end(),
                       [](const Piece& piece) { return piece.numberOfPoints == 0 && piece.numberOfCells == 0; });
}

} // namespace veltra::vtkfile
