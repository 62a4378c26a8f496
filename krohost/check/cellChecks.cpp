#include "krohost/check/arrayChecks.h"
#include "krohost/vtu/cellTypes.h"
#include "krohost/vtu/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace krohost::check {

namespace {

using vtu::Array;
using vtu::CellType;
using vtu::Document;
using vtu::Piece;

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

/// The cells of one piece; all of its arrays are there and are of whole numbers.
class PieceCells {
public:
    PieceCells(const Document& document, const Piece& piece, Findings& findings, const Poll& poll)
        : document_{document}, piece_{piece}, findings_{findings}, poll_{poll}, cellCount_{*piece.cellCount} {}

    /// Pairs of types and numbers of nodes, which become sections of the zone.
    using Kinds = std::set<std::pair<std::int64_t, std::int64_t>>;

    void checkTypes(Kinds& kinds) {
        const Array& types = array("types");
        if (!readTypes(types))
            return;
        const Array& offsets = array("offsets");
        std::uint64_t cell = 0;
        Tally wrongCounts, falling;
        const auto check = [&](std::int64_t offset) {
            if (cell >= types_.size()) {
                ++cell;
                return;
            }
            const std::int64_t type = types_[static_cast<std::size_t>(cell)];
            const CellType* known = vtu::findCellType(type);
            const std::int64_t nodeCount = difference(offset, lastOffset_);
            if (offset < lastOffset_)
                falling.add([&] {
                    return fmt::format("offset {} of cell {} is below {}, the one before", offset, cell, lastOffset_);
                });
            else if (known && !hasNodeCount(*known, nodeCount))
                wrongCounts.add([&] {
                    return fmt::format("cell {} of type {} has {} nodes (accepted: {})", cell, type, nodeCount,
                                       nodeCounts(*known));
                });
            else if (known)
                kinds.emplace(type, nodeCount);
            lastOffset_ = offset;
            ++cell;
        };
        const bool isWhole = read(offsets, check);
        if (isWhole)
            checkValueCount(offsets, cell, findings_);
        hasOffsets_ = isWhole && cell >= cellCount_ && falling.isEmpty();
        falling.report("offsets", offsets, findings_);
        wrongCounts.report("cell-nodes", offsets, findings_);
    }

    void checkConnectivity() {
        const Array& connectivity = array("connectivity");
        const std::uint64_t pointCount = piece_.pointCount.value_or(0);
        std::uint64_t place = 0;
        Tally outside;
        const bool isWhole = read(connectivity, [&](std::int64_t node) {
            const bool isPassedOver = hasOffsets_ && place >= static_cast<std::uint64_t>(lastOffset_);
            if (!isPassedOver && (node < 0 || static_cast<std::uint64_t>(node) >= pointCount))
                outside.add([&] {
                    return fmt::format("node number {} at place {} of connectivity (accepted: 0 to {})", node, place,
                                       static_cast<std::int64_t>(pointCount) - 1);
                });
            ++place;
        });
        outside.report("node-number", connectivity, findings_);
        if (isWhole && hasOffsets_)
            compareWithOffsets(connectivity, place);
    }

private:
    void compareWithOffsets(const Array& connectivity, std::uint64_t nodeCount) {
        const auto needed = static_cast<std::uint64_t>(lastOffset_);
        const std::string message =
            fmt::format("connectivity holds {} node numbers, but the last offset is {}", nodeCount, lastOffset_);
        if (nodeCount < needed)
            findings_.error("connectivity", connectivity.element.position, message);
        else if (nodeCount > needed)
            findings_.warning("connectivity", connectivity.element.position, message);
    }

    const Array& array(std::string_view name) const {
        return *std::find_if(piece_.cells.begin(), piece_.cells.end(),
                             [name](const Array& entry) { return vtu::equalsIgnoringCase(entry.name, name); });
    }

    template <class Use>
    bool read(const Array& array, const Use& use) {
        const vtu::Decoded decoded = vtu::decode(document_, array, [&](std::span<const std::byte> bytes) {
            poll_();
            vtu::forEachInteger(*array.type, bytes, use);
        });
        reportFaults(array, decoded, findings_);
        return decoded.faults.empty();
    }

    /// False when there are not as many as cells.
    bool readTypes(const Array& types) {
        int dimension = 0; // of the cells so far; points go with all
        std::uint64_t count = 0;
        Tally unknown, mixed;
        const bool isWhole = read(types, [&](std::int64_t type) {
            const std::uint64_t cell = count++;
            if (cell >= cellCount_)
                return;
            const CellType* known = vtu::findCellType(type);
            if (!known)
                unknown.add([&] { return fmt::format("cell {} is of type {}, which is not read", cell, type); });
            else if (known->dimension > 0 && dimension > 0 && known->dimension != dimension)
                mixed.add([&] {
                    return fmt::format("cell {} of type {} has {} dimensions, those before have {} (accepted: the same "
                                       "for all cells but vertices)",
                                       cell, type, known->dimension, dimension);
                });
            else if (known && known->dimension > 0)
                dimension = known->dimension;
            types_.push_back(known ? static_cast<std::uint8_t>(type) : std::uint8_t{0});
        });
        unknown.report("cell-type", types, findings_);
        mixed.report("mixed-dimensions", types, findings_);
        if (isWhole)
            checkValueCount(types, count, findings_);
        return isWhole && count >= cellCount_;
    }

    static bool hasNodeCount(const CellType& type, std::int64_t count) {
        return count > 0 && std::find(type.nodeCounts.begin(), type.nodeCounts.end(), count) != type.nodeCounts.end();
    }

    static std::string nodeCounts(const CellType& type) {
        std::string text;
        for (const std::int64_t count : type.nodeCounts)
            if (count > 0)
                text += (text.empty() ? "" : ", ") + std::to_string(count);
        return text;
    }

    const Document& document_;
    const Piece& piece_;
    Findings& findings_;
    const Poll& poll_;
    std::uint64_t cellCount_;
    std::vector<std::uint8_t> types_; // 0: not read
    std::int64_t lastOffset_ = 0;
    bool hasOffsets_ = false;
};

bool hasCells(const Document& document, const Piece& piece) {
    if (piece.cellCount.value_or(0) == 0 || piece.cells.size() != 3)
        return false;
    const auto isThere = [&](std::string_view name) {
        return std::any_of(piece.cells.begin(), piece.cells.end(), [&](const Array& array) {
            return vtu::equalsIgnoringCase(array.name, name) && array.type && array.format &&
                   !vtu::isFloatingPoint(*array.type) && !vtu::readHeader(document, array).fault;
        });
    };
    return isThere("connectivity") && isThere("offsets") && isThere("types");
}

} // namespace

void checkCells(const Document& document, Findings& findings, bool isDeep, const Poll& poll) {
    constexpr std::size_t sectionLimit = 16;
    PieceCells::Kinds kinds;
    for (const Piece& piece : document.pieces) {
        if (!hasCells(document, piece))
            continue;
        PieceCells cells{document, piece, findings, poll};
        cells.checkTypes(kinds);
        if (isDeep)
            cells.checkConnectivity();
    }
    if (kinds.size() > sectionLimit)
        findings.error(
            "too-many-sections", document.root.position,
            fmt::format("the cells are of {} types and orders (accepted: {} at most)", kinds.size(), sectionLimit));
}

} // namespace krohost::check
