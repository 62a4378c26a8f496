#include "krohost/vtu/Document.h"
#include "krohost/vtu/cellTypes.h"
#include "krohost/write/WriteError.h"
#include "krohost/write/conversion.h"
#include "krohost/write/documentValues.h"
#include "krohost/write/hdfWriters.h"
#include "krohost/write/vtuFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>

namespace krohost::write {

namespace {

using vtu::Document;

/// The pieces of a file as one grid without the cells that keep it from being loaded.
class Repair {
public:
    explicit Repair(const std::filesystem::path& input) : document_{vtu::readDocument(input)} {
        if (document_.malformation)
            fail(document_.malformation->message);
        if (document_.type != "UnstructuredGrid" || document_.pieces.empty())
            fail("it is not an unstructured grid with pieces");
        for (const vtu::Piece& piece : document_.pieces) {
            cells_.push_back(readCells(document_, piece));
            requireNodes(cells_.back());
            if (piece.points.size() != 1)
                fail("a piece has no or several arrays of points");
        }
        for (const PieceCells& cells : cells_)
            for (const std::uint8_t type : cells.types)
                if (const vtu::CellType* known = vtu::findCellType(type))
                    dimension_ = std::max(dimension_, known->dimension);
    }

    bool keeps(std::uint8_t type) const {
        const vtu::CellType* known = vtu::findCellType(type);
        return known && (known->dimension == 0 || known->dimension == dimension_);
    }

    std::vector<std::string> notes() const {
        std::map<std::uint8_t, std::size_t> leftOut;
        for (const PieceCells& cells : cells_)
            for (const std::uint8_t type : cells.types)
                leftOut[type] += keeps(type) ? 0 : 1;
        std::vector<std::string> notes;
        for (const auto& [type, count] : leftOut)
            if (const vtu::CellType* known = vtu::findCellType(type); count > 0 && known)
                notes.push_back(
                    fmt::format("Cells left out: {} of type {}, whose dimension is {} where others have {}.", count,
                                type, known->dimension, dimension_));
            else if (count > 0)
                notes.push_back(fmt::format("Cells left out: {} of type {}, which is not loaded.", count, type));
        return notes;
    }

    Grid grid() const {
        Grid grid;
        const vtu::Piece& first = document_.pieces.front();
        grid.name = document_.path.stem().string();
        for (const vtu::Piece& piece : document_.pieces)
            grid.pointCount += piece.pointCount.value_or(0);
        std::uint64_t nodeCount = 0;
        forEachKeptCell([&](std::size_t pieceIndex, std::size_t cell) {
            ++grid.cellCount;
            nodeCount += static_cast<std::uint64_t>(cells_[pieceIndex].nodeCount(cell));
        });
        grid.points = pointArray(&vtu::Piece::points, 0, grid.pointCount);
        grid.points.name = "Points";
        for (std::size_t index = 0; index < first.pointData.size(); ++index)
            grid.pointData.push_back(pointArray(&vtu::Piece::pointData, index, grid.pointCount));
        for (std::size_t index = 0; index < first.cellData.size(); ++index)
            grid.cellData.push_back(cellArray(index, grid.cellCount));
        grid.fieldData = fieldData();
        grid.connectivity = {"connectivity", ElementType::Int64, 1, nodeCount,
                             [this](const Sink& sink) { produceConnectivity(sink); }};
        grid.offsets = {"offsets", ElementType::Int64, 1, grid.cellCount,
                        [this](const Sink& sink) { produceOffsets(sink); }};
        grid.types = {"types", ElementType::UInt8, 1, grid.cellCount, [this](const Sink& sink) { produceTypes(sink); }};
        return grid;
    }

private:
    using Arrays = std::vector<vtu::Array> vtu::Piece::*;

    [[noreturn]] void fail(const std::string& reason) const {
        throw WriteError(fmt::format("The file \"{}\" cannot be repaired: {}", document_.path.string(), reason));
    }

    void requireNodes(const PieceCells& cells) const {
        if (!cells.connectivity)
            return;
        std::int64_t nodeCount = 0;
        forEachInteger(document_, *cells.connectivity, [&](std::int64_t) { ++nodeCount; });
        if (nodeCount != cells.offsets.back())
            fail(fmt::format("its cells have {} nodes where {} are announced", nodeCount, cells.offsets.back()));
    }

    template <class Use>
    void forEachKeptCell(const Use& use) const {
        for (std::size_t pieceIndex = 0; pieceIndex < cells_.size(); ++pieceIndex)
            for (std::size_t cell = 0; cell < cells_[pieceIndex].types.size(); ++cell)
                if (keeps(cells_[pieceIndex].types[cell]))
                    use(pieceIndex, cell);
    }

    /// The array at a place of a list in every piece, all of one name and type. Pieces without values may lack it.
    std::vector<const vtu::Array*> ofPieces(Arrays list, std::size_t index) const {
        const vtu::Array& first = (document_.pieces.front().*list)[index];
        if (!first.type || !first.componentCount.value_or(0))
            fail(fmt::format("the array \"{}\" has no known type", first.name));
        std::vector<const vtu::Array*> arrays;
        for (const vtu::Piece& piece : document_.pieces) {
            const bool has = index < (piece.*list).size();
            const vtu::Array* array = has ? &(piece.*list)[index] : nullptr;
            if (!has || array->name != first.name || array->type != first.type ||
                array->componentCount != first.componentCount)
                fail(fmt::format("its pieces do not agree on the array \"{}\"", first.name));
            if (array->tupleCount > 0)
                requireValues(*array, array->tupleCount);
            arrays.push_back(array);
        }
        return arrays;
    }

    Array arrayLike(const vtu::Array& first, std::uint64_t tupleCount) const {
        return {first.name, *first.type, *first.componentCount, tupleCount, {}};
    }

    /// Writers believe what an array announces, so it is counted beforehand.
    void requireValues(const vtu::Array& array, std::uint64_t tupleCount) const {
        std::uint64_t byteCount = 0;
        produceValues(document_, array, [&](std::span<const std::byte> bytes) { byteCount += bytes.size(); });
        const std::uint64_t tupleByteCount = *array.componentCount * vtu::byteCount(*array.type);
        if (byteCount % tupleByteCount != 0 || byteCount / tupleByteCount != tupleCount)
            fail(fmt::format("the array \"{}\" has {} bytes where {} tuples of {} are announced", array.name, byteCount,
                             tupleCount, tupleByteCount));
    }

    Array pointArray(Arrays list, std::size_t index, std::uint64_t tupleCount) const {
        const auto arrays = ofPieces(list, index);
        Array array = arrayLike(*arrays.front(), tupleCount);
        array.produce = [this, arrays](const Sink& sink) {
            for (const vtu::Array* piece : arrays)
                if (piece->tupleCount > 0)
                    produceValues(document_, *piece, sink);
        };
        return array;
    }

    Array cellArray(std::size_t index, std::uint64_t tupleCount) const {
        const auto arrays = ofPieces(&vtu::Piece::cellData, index);
        Array array = arrayLike(*arrays.front(), tupleCount);
        const std::size_t itemByteCount = vtu::byteCount(array.type);
        array.produce = [this, arrays, itemByteCount, componentCount = array.componentCount](const Sink& sink) {
            for (std::size_t pieceIndex = 0; pieceIndex < arrays.size(); ++pieceIndex) {
                const std::vector<std::uint8_t>& types = cells_[pieceIndex].types;
                std::uint64_t value = 0;
                if (!types.empty())
                    produceValues(document_, *arrays[pieceIndex], [&](std::span<const std::byte> bytes) {
                        for (std::size_t begin = 0; begin < bytes.size(); begin += itemByteCount, ++value)
                            if (const std::uint64_t cell = value / componentCount;
                                cell < types.size() && keeps(types[cell]))
                                sink(bytes.subspan(begin, itemByteCount));
                    });
            }
        };
        return array;
    }

    std::vector<Array> fieldData() const {
        std::vector<Array> arrays;
        for (const vtu::Array& field : document_.fieldData) {
            if (!field.type || field.tupleCount == 0 || !field.componentCount.value_or(0) || field.tupleCount > 1000)
                continue;
            requireValues(field, field.tupleCount);
            arrays.push_back(arrayLike(field, field.tupleCount));
            arrays.back().produce = [this, &field](const Sink& sink) { produceValues(document_, field, sink); };
        }
        return arrays;
    }

    void produceConnectivity(const Sink& sink) const {
        std::uint64_t shift = 0;
        for (std::size_t pieceIndex = 0; pieceIndex < cells_.size(); ++pieceIndex) {
            const PieceCells& cells = cells_[pieceIndex];
            std::size_t cell = 0;
            std::int64_t index = 0;
            if (cells.connectivity)
                forEachInteger(document_, *cells.connectivity, [&](std::int64_t node) {
                    while (cell < cells.offsets.size() && index >= cells.offsets[cell])
                        ++cell;
                    ++index;
                    const auto shifted = static_cast<std::uint64_t>(node) + shift;
                    if (cell < cells.types.size() && keeps(cells.types[cell]))
                        sink(std::as_bytes(std::span{&shifted, 1}));
                });
            shift += document_.pieces[pieceIndex].pointCount.value_or(0);
        }
    }

    void produceOffsets(const Sink& sink) const {
        std::int64_t end = 0;
        forEachKeptCell([&](std::size_t pieceIndex, std::size_t cell) {
            end += cells_[pieceIndex].nodeCount(cell);
            sink(std::as_bytes(std::span{&end, 1}));
        });
    }

    void produceTypes(const Sink& sink) const {
        forEachKeptCell([&](std::size_t pieceIndex, std::size_t cell) {
            sink(std::as_bytes(std::span{&cells_[pieceIndex].types[cell], 1}));
        });
    }

    Document document_;
    std::vector<PieceCells> cells_; // by piece
    int dimension_ = 0;
};

} // namespace

Conversion repairFile(const std::filesystem::path& input, const Request& request) {
    if (request.format != FileFormat::vtu && request.format != FileFormat::vtkhdf)
        throw WriteError("A repaired file is written as .vtu or .vtkhdf.");
    const Repair repair{input};
    Outputs outputs{request.isReplacing};
    outputs.add(request.path, [&](const std::filesystem::path& temporary) {
        if (request.format == FileFormat::vtu)
            writeVtu(temporary, request.encoding, repair.grid());
        else
            hdfWriters().vtkhdf(temporary, request.encoding.isCompressed, {repair.grid()});
    });
    return {outputs.publish(), 1, repair.notes()};
}

} // namespace krohost::write
