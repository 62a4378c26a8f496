#pragma once

#include "krohost/check/Finding.h"
#include "krohost/reader/decode.h"
#include "krohost/reader/pieceArrays.h"

#include <cstdint>
#include <functional>
#include <string>

namespace krohost::check {

/// `DataArray "pressure"`
std::string nameInText(const reader::Array& array);

/// Compares the number of values with what is needed, where that is known. Fewer are an error; more are passed over by
/// a loader, and a warning.
void checkValueCount(const reader::Array& array, std::uint64_t heldCount, Findings& findings);

/// Faults of the first `neededCount` values are errors; of others, and of field data, of which a loader leaves out what
/// it cannot read, they are warnings.
void reportFaults(const reader::Array& array, const std::vector<reader::Fault>& faults, std::uint64_t neededCount,
                  Findings& findings);

/// An error, or of field data a warning.
Severity severityFor(const reader::Array& array);

using reader::Poll;

/// Compares header words, the place of the data and the number of values with what the file holds.
void checkArrayHeaders(const reader::Document& document, Findings& findings, const Poll& poll);

/// Decodes every array but those of the cells, and counts what is no finite number. Arrays that share their data are
/// decoded once.
void checkArrayValues(const reader::Document& document, Findings& findings, const Poll& poll);

/// Counts the values that a host holds otherwise, because its integers have 32 bits at most.
void checkNarrowing(const reader::Document& document, Findings& findings, const Poll& poll);

/// Compares the types of cells with those that a zone can have and the offsets with them. `isDeep` also decodes
/// connectivity and compares the node numbers with the piece's points.
void checkCells(const reader::Document& document, Findings& findings, bool isDeep, const Poll& poll);

} // namespace krohost::check
