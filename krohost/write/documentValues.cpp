#include "krohost/write/documentValues.h"

#include "krohost/vtu/decode.h"
#include "krohost/vtu/values.h"
#include "krohost/write/WriteError.h"

#include <fmt/format.h>

namespace krohost::write {

namespace {

const vtu::Array& cellArray(const vtu::Document& document, const vtu::Piece& piece, const char* name) {
    for (const vtu::Array& array : piece.cells)
        if (vtu::equalsIgnoringCase(array.name, name))
            return array;
    throw WriteError(fmt::format("The file \"{}\" has a piece without \"{}\".", document.path.string(), name));
}

} // namespace

void produceValues(const vtu::Document& document, const vtu::Array& array, const Sink& sink) {
    const vtu::Decoded decoded = vtu::decode(document, array, sink);
    if (!decoded.faults.empty())
        throw WriteError(fmt::format("The file \"{}\" cannot be read: array \"{}\", {}", document.path.string(),
                                     array.name, decoded.faults.front().message()));
}

void forEachInteger(const vtu::Document& document, const vtu::Array& array,
                    const std::function<void(std::int64_t)>& use) {
    const ElementType type = array.type.value_or(ElementType::Float64);
    produceValues(document, array, [&](std::span<const std::byte> bytes) {
        if (vtu::isFloatingPoint(type))
            throw WriteError("The cells of the file are not given by integers.");
        vtu::forEachInteger(type, bytes, use);
    });
}

PieceCells readCells(const vtu::Document& document, const vtu::Piece& piece) {
    PieceCells cells;
    const std::uint64_t cellCount = piece.cellCount.value_or(0);
    if (cellCount == 0)
        return cells;
    cells.connectivity = &cellArray(document, piece, "connectivity");
    const auto fail = [&] {
        throw WriteError(fmt::format("The file \"{}\" has cells that do not fit together.", document.path.string()));
    };
    forEachInteger(document, cellArray(document, piece, "types"), [&](std::int64_t type) {
        if (type < 0 || type > 255)
            fail();
        cells.types.push_back(static_cast<std::uint8_t>(type));
    });
    forEachInteger(document, cellArray(document, piece, "offsets"), [&](std::int64_t offset) {
        if (offset < (cells.offsets.empty() ? 0 : cells.offsets.back()))
            fail();
        cells.offsets.push_back(offset);
    });
    if (cells.types.size() != cellCount || cells.offsets.size() != cellCount)
        fail();
    return cells;
}

} // namespace krohost::write
