// A file, repaired as by `krohost convert --repair`: the result loads, and holds the values and cells of the file.

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"

#include "krohost/convert/WriteError.h"
#include "krohost/convert/conversion.h"
#include "krohost/reader/decode.h"

#include <vector>

namespace {

using namespace krohost::reader;

/// All that the pieces need of one of their arrays.
std::string bytesOf(const Document& document, std::vector<Array> Piece::*list, std::size_t index) {
    std::string bytes;
    for (const Piece& piece : document.pieces) {
        const Array& array = (piece.*list)[index];
        const std::size_t before = bytes.size();
        if (array.tupleCount > 0)
            decode(document, array, [&](std::span<const std::byte> some) {
                bytes.append(reinterpret_cast<const char*>(some.data()), some.size());
            });
        bytes.resize(before + array.tupleCount * *array.componentCount * byteCount(*array.type));
    }
    return bytes;
}

void compare(const Document& source, const Document& result, bool isComplete) {
    const Piece &first = source.pieces.front(), &only = result.pieces.front();
    fuzz::require(bytesOf(source, &Piece::points, 0) == bytesOf(result, &Piece::points, 0), "all points are kept");
    for (std::size_t index = 0; index < first.pointData.size(); ++index)
        fuzz::require(bytesOf(source, &Piece::pointData, index) == bytesOf(result, &Piece::pointData, index),
                      "values at points are kept");
    for (std::size_t index = 0; isComplete && index < first.cellData.size(); ++index)
        fuzz::require(bytesOf(source, &Piece::cellData, index) == bytesOf(result, &Piece::cellData, index),
                      "values at cells are kept");
    std::uint64_t cellCount = 0;
    for (const Piece& piece : source.pieces)
        cellCount += *piece.cellCount;
    fuzz::require((cellCount == *only.cellCount) == isComplete, "cells that are left out are told of");
    fuzz::require(cellCount == 0 || *only.cellCount > 0, "a cell is left");
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    const std::filesystem::path path = scratchFile("mesh.vtu", asText(input));
    const std::filesystem::path target = path.parent_path() / "repaired.vtu";
    krohost::convert::Conversion conversion;
    std::filesystem::remove(target);
    try {
        krohost::HostOptions options;
        options.storageByteLimit = 1 << 24;
        krohost::Host host(std::move(options));
        host.loadAddOn(ADD_ON);
        krohost::convert::Request request;
        request.path = target;
        conversion = krohost::convert::repairFile(host, path, request);
        host.shutDown();
        require(host.violations().empty(), "no rule of the interface is broken");
    } catch (const krohost::convert::WriteError& error) {
        require(!std::filesystem::exists(target), "a repair that fails leaves nothing");
        return sentence(error.what());
    }
    require(loadInHost(target) == "loaded", "what was repaired is loaded");
    compare(readDocument(path), readDocument(target), !conversion.isIncomplete);
    return conversion.isIncomplete ? "repaired, without some cells" : "repaired";
}
