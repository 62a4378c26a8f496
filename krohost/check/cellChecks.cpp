#include "krohost/check/arrayChecks.h"
#include "krohost/reader/IntegerReader.h"
#include "loader/cells/cellTypes.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

namespace krohost::check {

namespace {

using reader::Array;
using reader::Document;
using reader::Piece;
using veltra::vtkcells::CellType;

/// What is said of the first of many like things, and of how many there are.
class Tally {
public:
    template <class Message>
    void add(const Message& message) {
        if (count_++ == 0)
            first_ = message();
    }

    bool isEmpty() const { return count_ == 0; }

    void report(std::string_view code, const Array& array, Findings& findings) const {
        if (count_ == 1)
            findings.error(code, array.element.position, first_);
        else if (count_ > 1)
            findings.error(code, array.element.position, fmt::format("{}; {} more are like that", first_, count_ - 1));
    }

private:
    std::uint64_t count_ = 0;
    std::string first_;
};

/// Offsets from a file are any numbers; what wraps is no number of nodes that a cell has.
std::int64_t difference(std::int64_t offset, std::int64_t previous) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(offset) - static_cast<std::uint64_t>(previous));
}

std::string nodeCounts(const CellType& type) {
    std::string text;
    for (const std::uint32_t count : type.nodeCounts)
        if (count > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(count);
    return text;
}

/// Pairs of types and numbers of nodes, which become sections of the zone.
using Kinds = std::set<std::pair<std::int64_t, std::int64_t>>;

/// The cells of one piece; all of its arrays are there and are of whole numbers. They are read one by one, since a file
/// may claim any number of them.
class CellChecker {
public:
    CellChecker(const Document& document, const Piece& piece, Findings& findings, const Poll& poll)
        : document_{document}, piece_{piece}, findings_{findings}, poll_{poll},
          cellCount_{*piece.cellCount}, types_{array("types")}, offsets_{array("offsets")} {}

    void checkTypes(Kinds& kinds) {
        reader::IntegerReader types{document_, types_, poll_}, offsets{document_, offsets_, poll_};
        std::uint64_t typeCount = 0, offsetCount = 0;
        for (std::uint64_t cell = 0; cell < cellCount_; ++cell) {
            const auto type = types.next(), offset = offsets.next();
            if (!type && !offset)
                break;
            typeCount += type ? 1 : 0;
            offsetCount += offset ? 1 : 0;
            const CellType* known = type ? veltra::vtkcells::findCellType(*type) : nullptr;
            if (type)
                checkType(cell, *type, known);
            if (offset)
                checkOffset(cell, *offset, known, kinds);
        }
        report(types, types_, typeCount);
        hasOffsets_ = report(offsets, offsets_, offsetCount) && falling_.isEmpty();
        unknown_.report("cell-type", types_, findings_);
        mixed_.report("mixed-dimensions", types_, findings_);
        falling_.report("offsets", offsets_, findings_);
        wrongCounts_.report("cell-nodes", offsets_, findings_);
    }

    void checkConnectivity() {
        const Array& connectivity = array("connectivity");
        const std::uint64_t pointCount = piece_.pointCount.value_or(0);
        const auto needed = hasOffsets_ ? static_cast<std::uint64_t>(lastOffset_) : anyCount;
        reader::IntegerReader nodes{document_, connectivity, poll_};
        Tally outside;
        std::uint64_t place = 0;
        for (; place < needed; ++place) {
            const auto node = nodes.next();
            if (!node)
                break;
            if (*node < 0 || static_cast<std::uint64_t>(*node) >= pointCount)
                outside.add([&] {
                    return fmt::format("node number {} at place {} of connectivity (accepted: {})", *node, place,
                                       pointCount == 0 ? "none" : fmt::format("0 to {}", pointCount - 1));
                });
        }
        const bool hasMore = nodes.next().has_value();
        reportFaults(connectivity, nodes.decoded().faults, needed, findings_);
        outside.report("node-number", connectivity, findings_);
        if (hasOffsets_ && (place < needed || hasMore))
            findings_.add(hasMore ? Severity::warning : Severity::error, "connectivity", connectivity.element.position,
                          fmt::format("connectivity holds {} node numbers, but the last offset is {}",
                                      hasMore ? "more" : std::to_string(place), lastOffset_));
    }

private:
    static constexpr std::uint64_t anyCount = std::numeric_limits<std::uint64_t>::max();

    const Array& array(std::string_view name) const { return *piece_.cellArray(name); }

    /// What is wrong with an array of which so many values were taken. False when there are not as many as cells.
    bool report(reader::IntegerReader& reader, const Array& array, std::uint64_t count) {
        const bool hasMore = reader.next().has_value();
        reportFaults(array, reader.decoded().faults, cellCount_, findings_);
        if (count == cellCount_ && hasMore)
            findings_.warning(
                "value-count", array.element.position,
                fmt::format("{} holds more than the {} values that are needed", nameInText(array), cellCount_));
        else if (reader.decoded().faults.empty())
            checkValueCount(array, count, findings_);
        return count == cellCount_;
    }

    void checkType(std::uint64_t cell, std::int64_t type, const CellType* known) {
        if (!known)
            unknown_.add([&] { return fmt::format("cell {} is of type {}, which is not read", cell, type); });
        else if (known->dimension > 0 && dimension_ > 0 && known->dimension != dimension_)
            mixed_.add([&] {
                return fmt::format("cell {} of type {} has {} dimensions, those before have {} (accepted: the same "
                                   "for all cells but vertices)",
                                   cell, type, known->dimension, dimension_);
            });
        else if (known->dimension > 0)
            dimension_ = known->dimension;
    }

    void checkOffset(std::uint64_t cell, std::int64_t offset, const CellType* known, Kinds& kinds) {
        const std::int64_t nodeCount = difference(offset, lastOffset_);
        if (offset < lastOffset_)
            falling_.add([&] {
                return fmt::format("offset {} of cell {} is below {}, the one before", offset, cell, lastOffset_);
            });
        else if (known && known->order(nodeCount) == 0)
            wrongCounts_.add([&] {
                return fmt::format("cell {} of type {} has {} nodes (accepted: {})", cell, known->code(), nodeCount,
                                   nodeCounts(*known));
            });
        else if (known)
            kinds.emplace(known->code(), nodeCount);
        lastOffset_ = offset;
    }

    const Document& document_;
    const Piece& piece_;
    Findings& findings_;
    const Poll& poll_;
    std::uint64_t cellCount_;
    const Array& types_;
    const Array& offsets_;
    std::uint32_t dimension_ = 0; // of the cells so far; points go with all
    Tally unknown_, mixed_, wrongCounts_, falling_;
    std::int64_t lastOffset_ = 0;
    bool hasOffsets_ = false;
};

bool hasCells(const Document& document, const Piece& piece, const Poll& poll) {
    if (piece.cellCount.value_or(0) == 0 || piece.cells.size() != 3)
        return false;
    const auto isThere = [&](std::string_view name) {
        const Array* array = piece.cellArray(name);
        return array && array->type && array->format && !reader::isFloatingPoint(*array->type) &&
               !reader::readHeader(document, *array, poll).fault;
    };
    return isThere("connectivity") && isThere("offsets") && isThere("types");
}

/// A zone of vertices is made of its points alone, so that it has as many values at cells.
void checkVertices(const Document& document, Findings& findings) {
    std::uint64_t pointCount = 0, cellCount = 0; // which the host can count
    for (const Piece& piece : document.pieces) {
        pointCount += piece.pointCount.value_or(0);
        cellCount += piece.cellCount.value_or(0);
    }
    const Piece& first = document.pieces.front();
    if (!first.cellData.empty() && cellCount != pointCount)
        findings.error("vertices", first.element.position,
                       fmt::format("the cells are {} vertices of {} points (accepted: as many, or no values at cells)",
                                   cellCount, pointCount));
}

} // namespace

void checkCells(const Document& document, Findings& findings, bool isDeep, const Poll& poll) {
    constexpr std::size_t sectionLimit = 16;
    Kinds kinds;
    for (const Piece& piece : document.pieces) {
        if (!hasCells(document, piece, poll))
            continue;
        CellChecker cells{document, piece, findings, poll};
        cells.checkTypes(kinds);
        if (isDeep)
            cells.checkConnectivity();
    }
    if (kinds.size() > sectionLimit)
        findings.error(
            "too-many-sections", document.root.position,
            fmt::format("the cells are of {} types and orders (accepted: {} at most)", kinds.size(), sectionLimit));
    if (kinds == Kinds{{1, 1}})
        checkVertices(document, findings);
}

} // namespace krohost::check
