#include "krohost/convert/WriteError.h"
#include "krohost/convert/conversion.h"
#include "krohost/convert/documentValues.h"
#include "krohost/convert/hdfWriters.h"
#include "krohost/convert/requireLoads.h"
#include "krohost/convert/vtuFile.h"
#include "krohost/reader/Document.h"
#include "krohost/text/letterCase.h"
#include "loader/cells/cellTypes.h"
#include "loader/cells/nodeOrder.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

namespace krohost::convert {

namespace fs = std::filesystem;

namespace {

using veltra::vtkcells::CellType;
using veltra::vtkcells::findCellType;

using reader::Document;

/// A file that is removed with the object.
struct Scratch {
    fs::path path; ///< empty: none

    ~Scratch() {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
};

/// The pieces of a file as one grid without the cells that keep it from being loaded. The cells are read anew for each
/// array that depends on them, because a file may hold any number of them.
class Repair {
public:
    explicit Repair(const std::filesystem::path& input) : document_{reader::readDocument(input, pollInterrupt)} {
        if (document_.malformation)
            fail(document_.malformation->message);
        if (document_.type != "UnstructuredGrid" || document_.pieces.empty())
            fail("it is not an unstructured grid with pieces");
        isOld_ = knownVersion(document_) < std::pair{2, 1};
        for (const reader::Piece& piece : document_.pieces) {
            requireCounts(piece);
            countCells(piece);
            if (piece.points.size() != 1)
                fail("a piece has no or several arrays of points");
        }
        for (std::size_t type = 0; type < cellCounts_.size(); ++type)
            if (const CellType* known = findCellType(static_cast<int>(type)); known && cellCounts_[type] > 0)
                dimension_ = std::max(dimension_, known->dimension);
        for (std::size_t type = 0; type < cellCounts_.size(); ++type)
            if (keeps(static_cast<std::uint8_t>(type))) {
                keptCellCount_ += cellCounts_[type];
                keptNodeCount_ += nodeCounts_[type];
            }
        if (keptCellCount_ == 0 && cellCount_ > 0)
            fail("none of its cells is of a type that is loaded");
        dropFieldData();
    }

    Losses losses() const {
        Losses losses;
        const auto add = [&](std::uint64_t count, const char* location, std::string message) {
            losses.add({"dropped", std::move(message), {}, location, document_.path.string(), 1, count});
        };
        for (std::size_t type = 0; type < cellCounts_.size(); ++type) {
            const CellType* known = findCellType(static_cast<int>(type));
            const std::uint64_t count = keeps(static_cast<std::uint8_t>(type)) ? 0 : cellCounts_[type];
            if (count > 0 && known)
                add(count, "cells",
                    fmt::format("Cells left out: {} of type {}, whose dimension is {} where others have {}.", count,
                                type, known->dimension, dimension_));
            else if (count > 0)
                add(count, "cells", fmt::format("Cells left out: {} of type {}, which is not loaded.", count, type));
        }
        for (const auto& [name, reason] : droppedFields_)
            losses.add({.what = "dropped",
                        .message = fmt::format("Field data left out: \"{}\", which {}.", name, reason),
                        .array = name,
                        .location = "field",
                        .file = document_.path.string(),
                        .kind = reason});
        addArraysLeftOut(losses);
        return losses;
    }

    /// As a loader names it: like the only piece, else like the file.
    std::string zoneName() const {
        const std::string name = document_.pieces.front().element.nameAttribute();
        return document_.pieces.size() == 1 && !name.empty() ? name : document_.path.stem().string();
    }

    bool losesCells() const { return keptCellCount_ < cellCount_; }

    Grid grid() const {
        Grid grid;
        const reader::Piece& first = document_.pieces.front();
        grid.name = zoneName();
        grid.pointCount = pointCount_;
        grid.cellCount = keptCellCount_;
        grid.points = pointArray(&reader::Piece::points, 0);
        grid.points.name = "Points";
        for (std::size_t index = 0; index < first.pointData.size(); ++index)
            grid.pointData.push_back(pointArray(&reader::Piece::pointData, index));
        for (std::size_t index = 0; index < first.cellData.size(); ++index)
            grid.cellData.push_back(cellArray(index));
        for (const reader::Array& field : keptFields_)
            grid.fieldData.push_back(fieldArray(field));
        grid.connectivity = {"connectivity", ElementType::Int64, 1, keptNodeCount_,
                             [this](const Sink& sink) { produceConnectivity(sink); }};
        grid.offsets = {"offsets", ElementType::Int64, 1, keptCellCount_,
                        [this](const Sink& sink) { produceOffsets(sink); }};
        grid.types = {"types", ElementType::UInt8, 1, keptCellCount_, [this](const Sink& sink) { produceTypes(sink); }};
        return grid;
    }

private:
    using Arrays = std::vector<reader::Array> reader::Piece::*;

    void addArraysLeftOut(Losses& losses) const {
        const auto add = [&](const std::string& name, reader::Association association, const char* what) {
            losses.add({.what = "dropped",
                        .message = fmt::format("Left out: {} \"{}\" ({}).", what, name, locationWord(association)),
                        .array = name,
                        .location = locationWord(association),
                        .file = document_.path.string(),
                        .kind = what});
        };
        for (const reader::TextArray& array : document_.textArrays)
            add(array.element.nameAttribute(), array.association, "the array of texts");
        for (const reader::Remark& remark : document_.remarks)
            add(remark.array, remark.association, (remark.what + " of the array").c_str());
        for (const reader::Piece& piece : document_.pieces)
            for (const reader::Array& array : piece.cells)
                if (!isOneOf(array.name, {"connectivity", "offsets", "types"}))
                    add(array.name, array.association, "the array");
        for (const Arrays list : {&reader::Piece::pointData, &reader::Piece::cellData})
            for (const reader::Array& array : document_.pieces.front().*list)
                if (std::ranges::any_of(array.element.attributes, [](const reader::Attribute& attribute) {
                        return attribute.name.starts_with("ComponentName");
                    }))
                    add(array.name, array.association, "the names of components of the array");
    }

    static bool isOneOf(const std::string& name, std::initializer_list<std::string_view> names) {
        return std::ranges::any_of(names, [&](std::string_view other) { return equalsIgnoringCase(name, other); });
    }

    [[noreturn]] void fail(const std::string& reason) const {
        throw WriteError(fmt::format("The file \"{}\" cannot be repaired: {}", document_.path.string(), reason));
    }

    bool keeps(std::uint8_t type) const {
        const CellType* known = findCellType(type);
        return known && (known->dimension == 0 || known->dimension == dimension_);
    }

    /// The host counts in signed 64 bits.
    void requireCounts(const reader::Piece& piece) {
        constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
        if (!piece.pointCount || !piece.cellCount)
            fail("the number of points or cells of a piece is not a whole number");
        if (*piece.pointCount > most - pointCount_ || *piece.cellCount > most - cellCount_)
            fail("its pieces have more points or cells than any file holds");
        pointCount_ += *piece.pointCount;
        cellCount_ += *piece.cellCount;
    }

    void countCells(const reader::Piece& piece) {
        std::uint64_t nodeCount = 0;
        CellReader cells{document_, piece};
        while (const auto cell = cells.next()) {
            ++cellCounts_[cell->type];
            nodeCounts_[cell->type] += cell->nodeCount;
            nodeCount += cell->nodeCount;
        }
        if (*piece.cellCount > 0)
            requireNodes(piece, nodeCount);
    }

    void requireNodes(const reader::Piece& piece, std::uint64_t nodeCount) const {
        const reader::Array* connectivity = piece.cellArray("connectivity");
        if (!connectivity || !connectivity->type)
            fail("a piece has cells without connectivity");
        produceValues(document_, *connectivity, nodeCount, [](std::span<const std::byte>) {});
    }

    /// The array at a place of a list in every piece, all of one name and type.
    std::vector<const reader::Array*> ofPieces(Arrays list, std::size_t index) const {
        const reader::Array& first = (document_.pieces.front().*list)[index];
        requireComponents(first);
        std::vector<const reader::Array*> arrays;
        for (const reader::Piece& piece : document_.pieces) {
            const bool has = index < (piece.*list).size();
            const reader::Array* array = has ? &(piece.*list)[index] : nullptr;
            if ((piece.*list).size() != (document_.pieces.front().*list).size() || array->name != first.name ||
                array->type != first.type || array->componentCount != first.componentCount)
                fail(fmt::format("its pieces do not agree on the array \"{}\"", first.name));
            requireValues(*array);
            arrays.push_back(array);
        }
        return arrays;
    }

    void requireComponents(const reader::Array& array) const {
        if (!array.type)
            fail(fmt::format("the array \"{}\" has no known type", array.name));
        if (array.componentCount.value_or(0) == 0 || *array.componentCount > reader::componentLimit)
            fail(fmt::format("the number of components of the array \"{}\" is none from 1 to {}", array.name,
                             reader::componentLimit));
    }

    Array arrayLike(const reader::Array& first, std::uint64_t tupleCount) const {
        std::uint64_t byteCount = 0;
        if (__builtin_mul_overflow(tupleCount, *first.componentCount * reader::byteCount(*first.type), &byteCount))
            fail(fmt::format("the array \"{}\" has more values than any file holds", first.name));
        return {first.name, *first.type, *first.componentCount, tupleCount, {}};
    }

    /// All values of an array whose number of components is known.
    void produceAll(const reader::Array& array, const Sink& sink) const {
        const std::uint64_t valueCount = arrayLike(array, array.tupleCount).valueCount();
        if (valueCount > 0)
            produceValues(document_, array, valueCount, sink);
    }

    /// Writers believe what an array announces, so that it is read beforehand.
    void requireValues(const reader::Array& array) const {
        produceAll(array, [](std::span<const std::byte>) {});
    }

    Array pointArray(Arrays list, std::size_t index) const {
        const auto arrays = ofPieces(list, index);
        Array array = arrayLike(*arrays.front(), pointCount_);
        array.produce = [this, arrays](const Sink& sink) {
            for (const reader::Array* piece : arrays)
                produceAll(*piece, sink);
        };
        return array;
    }

    Array cellArray(std::size_t index) const {
        const auto arrays = ofPieces(&reader::Piece::cellData, index);
        Array array = arrayLike(*arrays.front(), keptCellCount_);
        array.produce = [this, arrays](const Sink& sink) {
            for (std::size_t pieceIndex = 0; pieceIndex < arrays.size(); ++pieceIndex)
                produceOfKeptCells(document_.pieces[pieceIndex], *arrays[pieceIndex], sink);
        };
        return array;
    }

    void produceOfKeptCells(const reader::Piece& piece, const reader::Array& array, const Sink& sink) const {
        const std::size_t valueByteCount = reader::byteCount(*array.type);
        CellReader cells{document_, piece};
        bool isKept = false;
        std::uint64_t component = 0; // of the next value
        produceAll(array, [&](std::span<const std::byte> bytes) {
            for (; !bytes.empty(); bytes = bytes.subspan(valueByteCount)) {
                if (component == 0) {
                    const auto cell = cells.next();
                    isKept = cell && keeps(cell->type);
                }
                if (isKept)
                    sink(bytes.first(valueByteCount));
                component = component + 1 == *array.componentCount ? 0 : component + 1;
            }
        });
    }

    /// Nothing in field data keeps a file from being loaded.
    void dropFieldData() {
        constexpr std::uint64_t tupleLimit = 1000;
        for (const reader::Array& field : document_.fieldData) {
            const std::uint64_t tupleCount = heldTupleCount(document_, field, tupleLimit);
            if (tupleCount == 0)
                droppedFields_.emplace_back(field.name, "cannot be read or is empty");
            else if (tupleCount > tupleLimit)
                droppedFields_.emplace_back(field.name, fmt::format("has more than {} tuples", tupleLimit));
            else
                keptFields_.emplace_back(field).tupleCount = tupleCount;
        }
    }

    Array fieldArray(const reader::Array& field) const {
        Array array = arrayLike(field, field.tupleCount);
        array.produce = [this, &field](const Sink& sink) { produceAll(field, sink); };
        return array;
    }

    void produceConnectivity(const Sink& sink) const {
        std::uint64_t shift = 0;
        for (const reader::Piece& piece : document_.pieces) {
            if (*piece.cellCount > 0) {
                CellReader cells{document_, piece};
                NodeReader nodes{document_, piece};
                while (const auto cell = cells.next())
                    produceNodes(*cell, nodes, *piece.pointCount, shift, sink);
            }
            shift += *piece.pointCount;
        }
    }

    /// Written are files of version 2.1, which have another order of some nodes than those before it.
    void produceNodes(const Cell& cell, NodeReader& nodes, std::uint64_t pointCount, std::uint64_t shift,
                      const Sink& sink) const {
        const veltra::vtkcells::NodeOrder order = veltra::vtkcells::nodeOrder(cell.type, cell.nodeCount);
        std::array<std::uint64_t, 125> moved; // by place in the file
        for (std::uint64_t place = 0; place < cell.nodeCount; ++place) {
            const std::uint64_t nodeInPiece = nodes.next();
            if (nodeInPiece >= pointCount && keeps(cell.type))
                fail(fmt::format("a cell has node {} where there are {} points", static_cast<std::int64_t>(nodeInPiece),
                                 pointCount));
            const std::uint64_t node = nodeInPiece + shift;
            if (isOld_ && !order.places.empty())
                moved[place] = node;
            else if (keeps(cell.type))
                sink(std::as_bytes(std::span{&node, 1}));
        }
        if (!isOld_ || order.places.empty() || !keeps(cell.type))
            return;
        std::array<std::uint64_t, 125> written;
        for (std::size_t inHost = 0; inHost < order.places.size(); ++inHost)
            written[order.places[inHost]] = moved[order.oldPlaces[inHost]];
        sink(std::as_bytes(std::span{written}.first(order.places.size())));
    }

    template <class Use>
    void forEachKeptCell(const Use& use) const {
        for (const reader::Piece& piece : document_.pieces) {
            CellReader cells{document_, piece};
            while (const auto cell = cells.next())
                if (keeps(cell->type))
                    use(*cell);
        }
    }

    void produceOffsets(const Sink& sink) const {
        std::uint64_t end = 0;
        forEachKeptCell([&](const Cell& cell) {
            end += cell.nodeCount;
            sink(std::as_bytes(std::span{&end, 1}));
        });
    }

    void produceTypes(const Sink& sink) const {
        forEachKeptCell([&](const Cell& cell) { sink(std::as_bytes(std::span{&cell.type, 1})); });
    }

    Document document_;
    std::uint64_t pointCount_ = 0, cellCount_ = 0;
    std::array<std::uint64_t, 256> cellCounts_{}, nodeCounts_{}; // by type
    std::uint64_t keptCellCount_ = 0, keptNodeCount_ = 0;
    std::uint32_t dimension_ = 0;
    bool isOld_ = false;                                             // of a version before 2.1
    std::vector<reader::Array> keptFields_;                          // with the number of tuples that they hold
    std::vector<std::pair<std::string, std::string>> droppedFields_; // names, and why
};

} // namespace

Conversion repairFile(Host& host, const std::filesystem::path& input, const Request& request) {
    if (request.format != FileFormat::vtu && request.format != FileFormat::vtkhdf)
        throw WriteError("A repaired file is written as .vtu or .vtkhdf.");
    const Repair repair{input};
    Losses losses = repair.losses();
    if (request.format == FileFormat::vtu)
        addXmlRenaming(repair.zoneName(), losses);
    requireAllowed(losses, request.isStrict);
    Outputs outputs{request.permission};
    outputs.add(request.path, [&](const std::filesystem::path& temporary) {
        const bool isVtu = request.format == FileFormat::vtu;
        const Scratch tried{isVtu ? fs::path{} : temporary.parent_path() / "tried.vtu"};
        writeVtu(isVtu ? temporary : tried.path, request.encoding, repair.grid());
        requireLoads(host, isVtu ? temporary : tried.path);
        if (!isVtu)
            hdfWriters().vtkhdf(temporary, request.encoding.isCompressed, {repair.grid()}, losses);
    });
    requireAllowed(losses, request.isStrict);
    return {outputs.publish(), 1, losses, repair.losesCells()};
}

} // namespace krohost::convert
