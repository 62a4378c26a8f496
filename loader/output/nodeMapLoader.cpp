#include "loader/output/nodeMapLoader.h"

#include "loader/output/loadGuard.h"

#include "loader/mesh/CellReader.h"

#include "loader/streams/dataArrayReader.h"

#include <algorithm>
#include <new>
#include <span>
#include <utility>

namespace veltra::vtkfile {

namespace {

struct PieceCells {
    CellArrays arrays;
    std::uint64_t cellCount;
    std::uint64_t nodeOffset; ///< the points of all earlier pieces
};

/// What the host keeps for a zone's node map until cleanup.
struct NodeMapRecord {
    std::shared_ptr<const std::string> loaderName;
    FileVersion version;
    std::vector<PieceCells> pieces;
    std::vector<Section> sections;
};

constexpr LoadFailureHandling failureHandling{badAsciiNodeNumber, false};

const NodeMapRecord* recordOf(const KroNodeMap* nodeMap) {
    return static_cast<const NodeMapRecord*>(KroUtilDataNodeGetClientData(nodeMap));
}

template <class Node>
Node* sectionStorage(KroNodeMap* nodeMap, std::int32_t sectionNumber) {
    if constexpr (sizeof(Node) == sizeof(std::int32_t))
        return KroUtilDataNodeSectionGetRawPtrByRef(nodeMap, sectionNumber);
    else
        return KroUtilDataNodeSectionGetRawPtrByRef64(nodeMap, sectionNumber);
}

/// Shifts a node number; one that does not fit wraps, as a number that the file got wrong may do.
template <class Node>
Node shifted(Node node, std::uint64_t nodeOffset) {
    Node sum{};
    static_cast<void>(__builtin_add_overflow(node, static_cast<Node>(nodeOffset), &sum));
    return sum;
}

/// Fills the node lists of all sections of a zone. `Node` is how the host stores node numbers.
template <class Node>
class NodeMapFiller {
public:
    NodeMapFiller(const NodeMapRecord& record, KroNodeMap* nodeMap)
        : record_(record), file_(openFile(record.pieces.front().arrays.connectivity)) {
        for (std::size_t index = 0; index < record.sections.size(); ++index)
            targets_.push_back(makeTarget(nodeMap, index));
    }

    /// As many cells as were counted are handed out, so that none being too many for its section means none too few.
    void fill() {
        const bool copiesPieces = targets_.size() == 1 && targets_.front().permutation.empty();
        for (const PieceCells& piece : record_.pieces) {
            if (piece.cellCount == 0)
                continue;
            if (copiesPieces)
                copyPiece(piece);
            else
                distributePiece(piece);
        }
    }

private:
    /// Where the nodes of a section's next cells go.
    struct Target {
        Node* next;
        std::uint64_t room; ///< nodes
        std::uint64_t allotted;
        std::span<const std::uint64_t> permutation;
        std::uint64_t nodesPerCell; ///< in the host
    };

    Target makeTarget(KroNodeMap* nodeMap, std::size_t index) const {
        const Section& section = record_.sections[index];
        const auto number = static_cast<std::int32_t>(index + 1);
        const auto room = static_cast<std::uint64_t>(KroUtilDataNodeSectionGetCount(nodeMap, number));
        // A vertex becomes a degenerate cell of the section's shape, with its one node in every place.
        const std::uint64_t nodesPerCell = section.type == VtkCell::Type::Vertex
                                               ? room / std::max<std::uint64_t>(section.cellCount, 1)
                                               : section.nodeCount;
        return {sectionStorage<Node>(nodeMap, number), room, room,
                VtkCell::nodePermutation(record_.version, section.type, section.nodeCount), nodesPerCell};
    }

    /// Claims the room for some cells of a section; returns where they go.
    Node* claim(Target& target, std::uint64_t cells) {
        std::uint64_t nodes = 0;
        if (__builtin_mul_overflow(cells, target.nodesPerCell, &nodes) || nodes > target.room)
            throw IOException(nodesNotAllotted(static_cast<std::size_t>(&target - targets_.data()), target.allotted));
        if (!target.next)
            throw std::bad_alloc(); // the host has no storage for the nodes
        target.room -= nodes;
        return std::exchange(target.next, target.next + nodes);
    }

    void copyPiece(const PieceCells& piece) {
        const DataArray& connectivity = piece.arrays.connectivity;
        Target& target = targets_.front();
        Node* dst = claim(target, piece.cellCount);
        const auto nodes = static_cast<std::size_t>(target.next - dst);
        const auto reader = openDataArrayOf(file_, connectivity, nodes);
        readIntegers(*reader, connectivity, dst, nodes);
        shift(dst, nodes, piece.nodeOffset);
    }

    void distributePiece(const PieceCells& piece) {
        const DataArray& connectivity = piece.arrays.connectivity;
        std::uint64_t heldCount = 0;
        const auto reader = openDataArrayReader(file_, connectivity, heldCount);
        CellReader cells(file_, piece.arrays, piece.cellCount);
        std::vector<CellRun> runs;
        while (cells.nextBlock(runs))
            distributeBlock(runs, *reader, connectivity, piece.nodeOffset);
    }

    /// Reads the nodes of a block of cells and hands each run of cells to its section.
    void distributeBlock(const std::vector<CellRun>& runs, StreamReader& reader, const DataArray& connectivity,
                         std::uint64_t nodeOffset) {
        std::size_t nodeCount = 0;
        for (const CellRun& run : runs) {
            if (findSection(record_.sections, run.type, run.nodeCount) == record_.sections.size())
                throw IOException(cellsChanged);
            nodeCount += run.cellCount * static_cast<std::size_t>(run.nodeCount);
        }
        block_.resize(std::max(block_.size(), nodeCount));
        readIntegers(reader, connectivity, block_.data(), nodeCount);
        shift(block_.data(), nodeCount, nodeOffset);
        const Node* nodes = block_.data();
        for (const CellRun& run : runs)
            nodes = distributeRun(run, nodes);
    }

    const Node* distributeRun(const CellRun& run, const Node* nodes) {
        Target& target = targets_[findSection(record_.sections, run.type, run.nodeCount)];
        Node* dst = claim(target, run.cellCount);
        const std::size_t nodesPerCell = static_cast<std::size_t>(run.nodeCount);
        const Node* end = nodes + run.cellCount * nodesPerCell;
        if (run.type == VtkCell::Type::Vertex) {
            for (; nodes != end; ++nodes)
                dst = std::fill_n(dst, target.nodesPerCell, *nodes);
        } else if (target.permutation.empty()) {
            std::copy(nodes, end, dst);
        } else {
            for (; nodes != end; nodes += nodesPerCell)
                for (const std::uint64_t place : target.permutation)
                    *dst++ = nodes[place];
        }
        return end;
    }

    static void shift(Node* nodes, std::size_t count, std::uint64_t nodeOffset) {
        if (nodeOffset != 0)
            std::transform(nodes, nodes + count, nodes, [&](Node node) { return shifted(node, nodeOffset); });
    }

    const NodeMapRecord& record_;
    FilePtr file_;
    std::vector<Target> targets_;
    std::vector<Node> block_;
};

KroBool loadNodeMap(KroNodeMap* nodeMap) {
    const NodeMapRecord& record = *recordOf(nodeMap);
    return guardedLoad(*record.loaderName, failureHandling, [&] {
        if (KroUtilDataNodeGetRawItemType(nodeMap) == 0)
            NodeMapFiller<std::int32_t>(record, nodeMap).fill();
        else
            NodeMapFiller<std::int64_t>(record, nodeMap).fill();
    });
}

KroBool unloadNodeMap(KroNodeMap*) {
    return 1;
}

void cleanUpNodeMap(KroNodeMap* nodeMap) {
    delete recordOf(nodeMap);
}

std::vector<PieceCells> pieceCells(const Zone& zone) {
    std::vector<PieceCells> pieces;
    std::uint64_t nodeOffset = 0;
    for (const Piece& piece : zone.pieces) {
        pieces.push_back({cellArrays(piece), piece.numberOfCells, nodeOffset});
        nodeOffset += piece.numberOfPoints;
    }
    return pieces;
}

} // namespace

bool registerNodeMapLoader(std::shared_ptr<const std::string> loaderName, std::int32_t zoneNumber, const Zone& zone,
                           std::vector<Section> sections) {
    try {
        auto record = std::make_unique<NodeMapRecord>(
            NodeMapRecord{std::move(loaderName), zone.version, pieceCells(zone), std::move(sections)});
        if (KroUtilDataNodeCustomLOD(zoneNumber, loadNodeMap, unloadNodeMap, cleanUpNodeMap, record.get()) != 1)
            return false;
        record.release(); // the host's until cleanup
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace veltra::vtkfile
