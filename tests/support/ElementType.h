#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

namespace test {

/// The ten element types of the file format.
enum class ElementType : std::uint8_t { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };

inline constexpr std::array<std::string_view, 10> elementTypeNames{"Int8",   "UInt8", "Int16",  "UInt16",  "Int32",
                                                                   "UInt32", "Int64", "UInt64", "Float32", "Float64"};

/// Calls `function` with a zero of the C++ type that holds such an element.
template <class Function>
decltype(auto) asElement(ElementType type, Function&& function) {
    using Element = std::variant<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                                 std::int64_t, std::uint64_t, float, double>;
    static constexpr std::array<Element, 10> zeros{std::int8_t{},  std::uint8_t{},  std::int16_t{}, std::uint16_t{},
                                                   std::int32_t{}, std::uint32_t{}, std::int64_t{}, std::uint64_t{},
                                                   float{},        double{}};
    return std::visit(function, zeros[static_cast<std::size_t>(type)]);
}

} // namespace test
