#include "krohost/check/arrayChecks.h"

#include "krohost/text/printable.h"
#include "krohost/vtu/values.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace krohost::check {

namespace {

using vtu::Array;
using vtu::Document;

/// Line and column of the array, with the byte of its data.
vtu::Position dataPosition(const Array& array, std::uint64_t byte) {
    return {byte, array.element.position.line, array.element.position.column};
}

bool isOfCells(const Array& array) {
    return array.section == vtu::Section::cells;
}

void checkHeader(const Document& document, const Array& array, Findings& findings) {
    const auto needed = neededValueCount(array);
    if (needed == 0 || !array.type || !array.format)
        return; // such an array may lack even its header
    const vtu::ArrayHeader header = vtu::readHeader(document, array);
    if (header.fault) {
        if (header.fault->kind != vtu::FaultKind::undecodable) // that stands in the tags
            findings.error(header.fault->code(), dataPosition(array, header.fault->byte),
                           nameInText(array) + ' ' + header.fault->message());
        return;
    }
    if (!needed)
        return;
    const std::uint64_t textLimit = (array.end - array.begin + 1) / 2; // a character for each, and one between two
    if (array.format != vtu::Format::ascii)
        checkValueCount(array, header.byteCount / vtu::byteCount(*array.type), findings);
    else if (textLimit < *needed)
        findings.error(
            "value-count", dataPosition(array, array.begin),
            fmt::format("{} holds no more than {} values, but {} are needed", nameInText(array), textLimit, *needed));
}

/// Numbers that are none.
struct Odd {
    std::uint64_t nanCount = 0;
    std::uint64_t infinityCount = 0;
};

void checkTupleCount(const Array& array, std::uint64_t heldCount, Findings& findings) {
    const auto declared = array.declaredTupleCount;
    const std::uint64_t componentCount = array.componentCount.value_or(0);
    if (declared && componentCount > 0 && heldCount / componentCount != *declared)
        findings.warning("tuple-count", array.element.position,
                         fmt::format("{} declares {} tuples and holds {}", nameInText(array), *declared,
                                     heldCount / componentCount));
}

void checkValues(const Document& document, const Array& array, Findings& findings, const Poll& poll) {
    Odd odd;
    const vtu::Decoded decoded = vtu::decode(document, array, [&](std::span<const std::byte> bytes) {
        poll();
        vtu::forEachReal(*array.type, bytes, [&odd](double value) {
            odd.nanCount += std::isnan(value) ? 1 : 0;
            odd.infinityCount += std::isinf(value) ? 1 : 0;
        });
    });
    reportFaults(array, decoded, findings);
    const std::uint64_t heldCount = decoded.byteCount / vtu::byteCount(*array.type);
    if (decoded.faults.empty()) {
        checkValueCount(array, heldCount, findings);
        checkTupleCount(array, heldCount, findings);
    }
    if (odd.nanCount + odd.infinityCount > 0)
        findings.warning("not-finite", array.element.position,
                         fmt::format("{} holds {} NaN and {} infinite of {} values", nameInText(array), odd.nanCount,
                                     odd.infinityCount, heldCount));
}

bool needsData(const Array& array) {
    return array.type && array.format && neededValueCount(array) != 0;
}

} // namespace

std::string nameInText(const Array& array) {
    constexpr std::size_t lengthLimit = 80;
    return fmt::format("DataArray \"{}\"", beginning(array.name, lengthLimit));
}

std::optional<std::uint64_t> neededValueCount(const Array& array) {
    if (isOfCells(array) && vtu::equalsIgnoringCase(array.name, "connectivity"))
        return array.tupleCount == 0 ? std::optional<std::uint64_t>{0} : std::nullopt;
    if (isOfCells(array))
        return array.tupleCount;
    if (array.section == vtu::Section::fieldData)
        return std::nullopt; // one of any length is left out, or taken when it has one value
    constexpr std::uint64_t componentLimit = 32767;
    std::uint64_t count = 0;
    const bool isOverflow = array.componentCount.value_or(componentLimit + 1) > componentLimit ||
                            __builtin_mul_overflow(array.tupleCount, *array.componentCount, &count);
    return isOverflow ? std::nullopt : std::optional{count};
}

void checkValueCount(const Array& array, std::uint64_t heldCount, Findings& findings) {
    const auto needed = neededValueCount(array);
    if (!needed || heldCount == *needed)
        return;
    const vtu::Position position = dataPosition(array, array.begin);
    const std::string message =
        fmt::format("{} holds {} values, but {} are needed", nameInText(array), heldCount, *needed);
    if (heldCount < *needed)
        findings.error("value-count", position, message);
    else
        findings.warning("value-count", position, message + "; those behind are passed over");
}

void reportFaults(const Array& array, const vtu::Decoded& decoded, Findings& findings) {
    for (const vtu::Fault& fault : decoded.faults)
        findings.error(fault.code(), dataPosition(array, fault.byte), nameInText(array) + ' ' + fault.message());
}

void checkArrayHeaders(const Document& document, Findings& findings) {
    bool isMissing = false; // said once
    for (const Array* array : document.arrays()) {
        if (array->format != vtu::Format::appended || document.appendedBegin) {
            checkHeader(document, *array, findings);
        } else if (!document.malformation && !document.appendedData && !std::exchange(isMissing, true)) {
            findings.error("no-appended-data", array->element.position,
                           nameInText(*array) + " is appended, but the file has no AppendedData");
        }
    }
}

void checkArrayValues(const Document& document, Findings& findings, const Poll& poll) {
    for (const Array* array : document.arrays())
        if (!isOfCells(*array) && needsData(*array))
            checkValues(document, *array, findings, poll);
}

} // namespace krohost::check
