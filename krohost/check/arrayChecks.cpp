#include "krohost/check/arrayChecks.h"

#include "krohost/reader/narrowing.h"
#include "krohost/reader/values.h"
#include "krohost/text/letterCase.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace krohost::check {

namespace {

using reader::Array;
using reader::Document;

/// Line and column of the array, with the byte of its data.
reader::Position dataPosition(const Array& array, std::uint64_t byte) {
    return {byte, array.element.position.line, array.element.position.column};
}

bool isNamed(const Array& array, const char* name) {
    return equalsIgnoringCase(array.name, name);
}

bool isOfCells(const Array& array) {
    return array.association == reader::Association::cells;
}

/// Of the cells there may be arrays that no loader reads, such as the faces of polyhedra.
bool isRead(const Array& array) {
    return !isOfCells(array) || isNamed(array, "connectivity") || isNamed(array, "offsets") || isNamed(array, "types");
}

/// Compares what the tags say of arrays with what the headers of their data say.
class HeaderChecker {
public:
    HeaderChecker(const Document& document, Findings& findings, const Poll& poll)
        : document_{document}, findings_{findings}, poll_{poll} {}

    void check(const Array& array) {
        if (!isRead(array) || !array.type || !array.format)
            return;
        const auto needed = reader::neededValueCount(array);
        if (needed == 0)
            return; // such an array may lack even its header
        if (!needed && isOverflow(array))
            findings_.error("size-overflow", array.element.position,
                            fmt::format("{} would have {} tuples of {} components, more than any file holds",
                                        nameInText(array), array.tupleCount, *array.componentCount));
        const auto header = headers_.get(array, [&] { return reader::readHeader(document_, array, poll_); });
        if (header.fault) {
            if (header.fault->kind != reader::FaultKind::undecodable) // that is in the tags
                findings_.add(severityFor(array), header.fault->code(), dataPosition(array, header.fault->byte),
                              nameInText(array) + ' ' + header.fault->message());
        } else if (needed && array.format != reader::Format::ascii) {
            checkValueCount(array, header.byteCount / reader::byteCount(*array.type), findings_);
        } else if (needed) {
            checkTextLength(array, *needed);
        }
    }

private:
    static bool isOverflow(const Array& array) {
        return array.association != reader::Association::fieldData && !isOfCells(array) &&
               array.componentCount.value_or(reader::componentLimit + 1) <= reader::componentLimit;
    }

    void checkTextLength(const Array& array, std::uint64_t needed) {
        const std::uint64_t limit = (array.end - array.begin + 1) / 2; // a character for each, and one between two
        if (limit < needed)
            findings_.error(
                "value-count", dataPosition(array, array.begin),
                fmt::format("{} holds no more than {} values, but {} are needed", nameInText(array), limit, needed));
    }

    const Document& document_;
    Findings& findings_;
    const Poll& poll_;
    reader::Shared<reader::ArrayHeader> headers_;
};

/// What comes of the data of an array.
struct Content {
    std::uint64_t heldCount = 0;
    std::uint64_t nanCount = 0;
    std::uint64_t infinityCount = 0;
    std::vector<reader::Fault> faults;
};

Content readContent(const Document& document, const Array& array, const Poll& poll) {
    Content content;
    reader::Decoded decoded = reader::decode(
        document, array,
        [&](std::span<const std::byte> bytes) {
            reader::forEachReal(*array.type, bytes, [&content](double value) {
                content.nanCount += std::isnan(value) ? 1 : 0;
                content.infinityCount += std::isinf(value) ? 1 : 0;
            });
        },
        poll);
    if (array.format == reader::Format::appended && decoded.faults.size() > 10)
        decoded.faults.resize(10); // they are kept as long as there are arrays
    content.heldCount = decoded.byteCount / reader::byteCount(*array.type);
    content.faults = std::move(decoded.faults);
    return content;
}

void checkTupleCount(const Array& array, std::uint64_t heldCount, Findings& findings) {
    const auto declared = array.declaredTupleCount;
    const std::uint64_t componentCount = array.componentCount.value_or(0);
    if (declared && componentCount > 0 && heldCount / componentCount != *declared)
        findings.warning("tuple-count", array.element.position,
                         fmt::format("{} declares {} tuples and holds {}", nameInText(array), *declared,
                                     heldCount / componentCount));
}

void checkContent(const Array& array, const Content& content, Findings& findings) {
    const std::uint64_t needed = reader::neededValueCount(array).value_or(0);
    reportFaults(array, content.faults, needed, findings);
    if (content.faults.empty()) {
        checkValueCount(array, content.heldCount, findings);
        checkTupleCount(array, content.heldCount, findings);
    }
    if (content.nanCount + content.infinityCount > 0)
        findings.warning("not-finite", array.element.position,
                         fmt::format("{} holds {} NaN and {} infinite of {} values", nameInText(array),
                                     content.nanCount, content.infinityCount, content.heldCount));
}

bool needsData(const Array& array) {
    return array.type && array.format && reader::neededValueCount(array) != 0;
}

} // namespace

std::string nameInText(const Array& array) {
    constexpr std::size_t lengthLimit = 80;
    return fmt::format("DataArray \"{}\"", beginning(array.name, lengthLimit));
}

void checkValueCount(const Array& array, std::uint64_t heldCount, Findings& findings) {
    const auto needed = reader::neededValueCount(array);
    if (needed && heldCount != *needed)
        findings.add(heldCount < *needed ? Severity::error : Severity::warning, "value-count",
                     dataPosition(array, array.begin),
                     fmt::format("{} holds {} values, but {} are needed", nameInText(array), heldCount, *needed));
}

Severity severityFor(const Array& array) {
    return array.association == reader::Association::fieldData ? Severity::warning : Severity::error;
}

void reportFaults(const Array& array, const std::vector<reader::Fault>& faults, std::uint64_t neededCount,
                  Findings& findings) {
    for (const reader::Fault& fault : faults) {
        const bool isNeeded = fault.valueByte / reader::byteCount(*array.type) < neededCount;
        findings.add(isNeeded ? severityFor(array) : Severity::warning, fault.code(), dataPosition(array, fault.byte),
                     nameInText(array) + ' ' + fault.message());
    }
}

void checkArrayHeaders(const Document& document, Findings& findings, const Poll& poll) {
    HeaderChecker checker{document, findings, poll};
    bool isMissing = false; // said once
    for (const Array* array : document.arrays()) {
        if (array->format != reader::Format::appended || document.appendedBegin)
            checker.check(*array);
        else if (!document.malformation && !document.appendedData && !std::exchange(isMissing, true))
            findings.add(severityFor(*array), "no-appended-data", array->element.position,
                         nameInText(*array) + " is appended, but the file has no AppendedData");
    }
}

void checkArrayValues(const Document& document, Findings& findings, const Poll& poll) {
    reader::Shared<Content> contents;
    for (const Array* array : document.arrays())
        if (!isOfCells(*array) && needsData(*array))
            checkContent(*array, contents.get(*array, [&] { return readContent(document, *array, poll); }), findings);
}

void checkNarrowing(const Document& document, Findings& findings, const Poll& poll) {
    for (const reader::PiecewiseArray& array : reader::piecewiseArrays(document)) {
        if (array.isConnectivity())
            continue; // node numbers beyond the points are errors
        const reader::Narrowing narrowing = reader::narrowingOf(document, array, poll);
        if (narrowing.narrowedCount > 0)
            findings.warning("narrowed", array.first().element.position,
                             fmt::format("{} holds {} of {} values that a host holds otherwise: {}",
                                         nameInText(array.first()), narrowing.narrowedCount, narrowing.valueCount,
                                         reader::inWords(narrowing.first, array.first())));
    }
}

} // namespace krohost::check
