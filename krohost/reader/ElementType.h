#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace krohost::reader {

/// The types that the values of an array can have.
enum class ElementType : std::uint8_t { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };

std::optional<ElementType> elementType(std::string_view name);
/// As the `type` attribute has it.
std::string_view elementTypeName(ElementType type);
/// Bytes of one value.
std::size_t byteCount(ElementType type);
inline bool isFloatingPoint(ElementType type) {
    return type >= ElementType::Float32;
}

} // namespace krohost::reader
