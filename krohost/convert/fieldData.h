/// Auxiliary texts of zones as field data of files.
#pragma once

#include "krohost/convert/Grid.h"
#include "krohost/host/model/Dataset.h"
#include "krohost/reader/Document.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace krohost::convert {

/// Whether field data of this name tell a time.
bool isTimeName(const std::string& name);

/// The only value of an array.
struct FieldValue {
    ElementType type{};
    std::array<std::byte, 8> bytes{}; ///< as many as the type has
    std::string text;                 ///< the shortest that reads back as the same number of the type, as a host has it
    double number = 0;
};

/// Nothing where an array has more values or fewer, or none that can be read. Throws Interrupted.
std::optional<FieldValue> onlyValue(const reader::Document& document, const reader::Array& array);

/// Whether auxiliary data become field data: not the name of a block and not another time than the zone's. Their text
/// may still be no number.
bool isFieldOf(const Zone& zone, const std::string& name, const std::string& text);

/// For each zone, the auxiliary texts that are numbers: where a file gives them, in its type. The solution time is
/// among them, as "TimeValue" where no text tells it, unless it is 0 and no text told a finite one. Throws Interrupted.
std::vector<std::vector<Array>> fieldData(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs);

} // namespace krohost::convert
