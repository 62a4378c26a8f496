#include "krohost/reader/ElementType.h"

#include <algorithm>
#include <array>

namespace krohost::reader {

namespace {

struct Row {
    ElementType type;
    std::string_view name;
    std::size_t byteCount;
};

constexpr auto rows = std::to_array<Row>({
    {ElementType::Int8, "Int8", 1},
    {ElementType::UInt8, "UInt8", 1},
    {ElementType::Int16, "Int16", 2},
    {ElementType::UInt16, "UInt16", 2},
    {ElementType::Int32, "Int32", 4},
    {ElementType::UInt32, "UInt32", 4},
    {ElementType::Int64, "Int64", 8},
    {ElementType::UInt64, "UInt64", 8},
    {ElementType::Float32, "Float32", 4},
    {ElementType::Float64, "Float64", 8},
});

constexpr bool isInOrder() {
    for (std::size_t index = 0; index < rows.size(); ++index)
        if (rows[index].type != static_cast<ElementType>(index))
            return false;
    return rows.back().type == ElementType::Float64;
}
static_assert(isInOrder(), "each type has its row, in the order of the enumerators");

} // namespace

std::optional<ElementType> elementType(std::string_view name) {
    const auto found = std::find_if(rows.begin(), rows.end(), [name](const Row& row) { return row.name == name; });
    return found == rows.end() ? std::nullopt : std::optional{found->type};
}

std::string_view elementTypeName(ElementType type) {
    return rows[static_cast<std::size_t>(type)].name;
}

std::size_t byteCount(ElementType type) {
    return rows[static_cast<std::size_t>(type)].byteCount;
}

} // namespace krohost::reader
