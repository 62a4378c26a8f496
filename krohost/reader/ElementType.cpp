#include "krohost/reader/ElementType.h"

#include <algorithm>
#include <array>

namespace krohost::reader {

namespace {

struct Row {
    std::string_view name;
    std::size_t byteCount;
};

/// In the order of ElementType.
constexpr std::array<Row, 10> rows{{{"Int8", 1},
                                    {"UInt8", 1},
                                    {"Int16", 2},
                                    {"UInt16", 2},
                                    {"Int32", 4},
                                    {"UInt32", 4},
                                    {"Int64", 8},
                                    {"UInt64", 8},
                                    {"Float32", 4},
                                    {"Float64", 8}}};

} // namespace

std::optional<ElementType> elementType(std::string_view name) {
    const auto found = std::find_if(rows.begin(), rows.end(), [name](const Row& row) { return row.name == name; });
    if (found == rows.end())
        return std::nullopt;
    return static_cast<ElementType>(found - rows.begin());
}

std::string_view elementTypeName(ElementType type) {
    return rows[static_cast<std::size_t>(type)].name;
}

std::size_t byteCount(ElementType type) {
    return rows[static_cast<std::size_t>(type)].byteCount;
}

} // namespace krohost::reader
