#include "krohost/convert/documentValues.h"

#include "krohost/convert/Loss.h"
#include "krohost/convert/WriteError.h"
#include "krohost/text/letterCase.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <memory>
#include <tuple>
#include <utility>

namespace krohost::convert {

namespace {

const reader::Array& cellArray(const reader::Document& document, const reader::Piece& piece, const char* name) {
    const reader::Array* array = piece.cellArray(name);
    if (!array)
        throw WriteError(fmt::format("The file \"{}\" has a piece without \"{}\".", document.path.string(), name));
    if (array->type && reader::isFloatingPoint(*array->type))
        throw WriteError("The cells of the file are not given by integers.");
    return *array;
}

[[noreturn]] void failToRead(const reader::Document& document, const std::string& name, const reader::Fault& fault) {
    throw WriteError(
        fmt::format("The file \"{}\" cannot be read: array \"{}\", {}", document.path.string(), name, fault.message()));
}

} // namespace

std::pair<int, int> knownVersion(const reader::Document& document) {
    const auto require = [&](bool isKnown, const char* attribute) {
        if (!isKnown)
            throw WriteError(fmt::format("The file \"{}\" cannot be repaired: its {} \"{}\" is unknown",
                                         document.path.string(), attribute, *document.root.find(attribute)));
    };
    for (const auto& [attribute, first, second] :
         {std::tuple{"byte_order", "LittleEndian", "BigEndian"}, {"header_type", "UInt32", "UInt64"}}) {
        const std::string* word = document.root.find(attribute);
        require(!word || equalsIgnoringCase(*word, first) || equalsIgnoringCase(*word, second), attribute);
    }
    const std::string* version = document.root.find("version");
    std::pair<int, int> numbers{0, 0};
    require(!version || std::sscanf(version->c_str(), "%4d.%4d", &numbers.first, &numbers.second) > 0, "version");
    return numbers;
}

void produceValues(const reader::Document& document, const reader::Array& array, std::uint64_t valueCount,
                   const Sink& sink) {
    const std::size_t valueByteCount = reader::byteCount(*array.type);
    const auto block = std::make_unique_for_overwrite<std::array<std::byte, 65536>>();
    reader::ArrayReader reader{document, array, pollInterrupt};
    std::uint64_t left = valueCount;
    while (left > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, block->size() / valueByteCount));
        const std::size_t count = reader.read(std::span{*block}.first(wanted * valueByteCount));
        if (count == 0)
            break;
        sink(std::span{*block}.first(count));
        left -= count / valueByteCount;
    }
    reader.read(std::span{*block}.first(valueByteCount)); // shows what is wrong with the last block
    for (const reader::Fault& fault : reader.decoded().faults)
        if (left > 0 || fault.valueByte / valueByteCount < valueCount)
            failToRead(document, array.name, fault);
    if (left > 0)
        throw WriteError(fmt::format("The file \"{}\" cannot be read: array \"{}\" holds {} values where {} are needed",
                                     document.path.string(), array.name, valueCount - left, valueCount));
}

std::uint64_t heldTupleCount(const reader::Document& document, const reader::Array& array, std::uint64_t limit) {
    const std::uint64_t componentCount = array.componentCount.value_or(0);
    if (!array.type || componentCount == 0 || componentCount > reader::componentLimit || array.declaredTupleCount == 0u)
        return 0;
    const std::uint64_t tupleByteCount = componentCount * reader::byteCount(*array.type);
    reader::ArrayReader reader{document, array, pollInterrupt};
    std::array<std::byte, 8192> block;
    std::uint64_t byteCount = 0;
    while (const std::size_t count = reader.read(block)) {
        byteCount += count;
        if (byteCount / tupleByteCount > limit)
            return limit + 1;
    }
    const std::uint64_t tupleCount = byteCount / tupleByteCount;
    const bool isSound = byteCount % tupleByteCount == 0 && reader.decoded().faults.empty();
    return isSound && tupleCount >= array.declaredTupleCount.value_or(0) ? tupleCount : 0;
}

CellReader::CellReader(const reader::Document& document, const reader::Piece& piece)
    : document_{document}, cellCount_{piece.cellCount.value_or(0)}, leftCount_{cellCount_} {
    if (cellCount_ == 0)
        return;
    types_.emplace(document, cellArray(document, piece, "types"), pollInterrupt);
    offsets_.emplace(document, cellArray(document, piece, "offsets"), pollInterrupt);
}

void CellReader::requireSound(const reader::IntegerReader& reader, const char* name) const {
    for (const reader::Fault& fault : reader.decoded().faults)
        if (fault.valueByte / reader.valueByteCount() < cellCount_)
            failToRead(document_, name, fault);
}

std::optional<Cell> CellReader::next() {
    if (leftCount_ == 0)
        return std::nullopt;
    const auto type = types_->next(), offset = offsets_->next();
    const bool isLast = --leftCount_ == 0;
    if (isLast || !type || !offset) {
        types_->next(); // shows what is wrong with the last block
        offsets_->next();
        requireSound(*types_, "types");
        requireSound(*offsets_, "offsets");
    }
    constexpr std::int64_t largestType = std::numeric_limits<std::uint8_t>::max();
    if (!type || *type < 0 || *type > largestType || !offset || *offset < lastOffset_)
        throw WriteError(fmt::format("The file \"{}\" has cells that do not fit together.", document_.path.string()));
    const std::int64_t previous = std::exchange(lastOffset_, *offset);
    return Cell{static_cast<std::uint8_t>(*type), static_cast<std::uint64_t>(*offset - previous)};
}

NodeReader::NodeReader(const reader::Document& document, const reader::Piece& piece)
    : document_{document}, nodes_{document, cellArray(document, piece, "connectivity"), pollInterrupt} {}

std::uint64_t NodeReader::next() {
    const auto node = nodes_.next();
    if (!nodes_.decoded().faults.empty() && !node)
        failToRead(document_, "connectivity", nodes_.decoded().faults.front());
    if (!node)
        throw WriteError(fmt::format("The file \"{}\" cannot be read: its cells have more nodes than it holds",
                                     document_.path.string()));
    return static_cast<std::uint64_t>(*node);
}

} // namespace krohost::convert
