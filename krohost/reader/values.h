/// Decoded bytes as numbers.
#pragma once

#include "krohost/reader/ElementType.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace krohost::reader {

template <class Value, class Use>
void forEachOf(std::span<const std::byte> bytes, const Use& use) {
    for (Value value; bytes.size() >= sizeof value; bytes = bytes.subspan(sizeof value)) {
        std::memcpy(&value, bytes.data(), sizeof value);
        use(value);
    }
}

/// Calls `use` with a value of the type.
template <class Use>
void withValueType(ElementType type, const Use& use) {
    switch (type) {
    case ElementType::Int8:
        return use(std::int8_t{});
    case ElementType::UInt8:
        return use(std::uint8_t{});
    case ElementType::Int16:
        return use(std::int16_t{});
    case ElementType::UInt16:
        return use(std::uint16_t{});
    case ElementType::Int32:
        return use(std::int32_t{});
    case ElementType::UInt32:
        return use(std::uint32_t{});
    case ElementType::Int64:
        return use(std::int64_t{});
    case ElementType::UInt64:
        return use(std::uint64_t{});
    case ElementType::Float32:
        return use(float{});
    case ElementType::Float64:
        return use(double{});
    }
}

/// Calls `use` with every value, in its own type.
template <class Use>
void forEachValue(ElementType type, std::span<const std::byte> bytes, const Use& use) {
    withValueType(type, [&]<class Value>(Value) { forEachOf<Value>(bytes, use); });
}

/// Nothing for whole numbers.
template <class Use>
void forEachReal(ElementType type, std::span<const std::byte> bytes, const Use& use) {
    forEachValue(type, bytes, [&use](auto value) {
        if constexpr (std::floating_point<decltype(value)>)
            use(value);
    });
}

/// As 64 bits, where the largest unsigned ones become negative; nothing for others than whole numbers.
template <class Use>
void forEachInteger(ElementType type, std::span<const std::byte> bytes, const Use& use) {
    forEachValue(type, bytes, [&use](auto value) {
        if constexpr (std::integral<decltype(value)>)
            use(static_cast<std::int64_t>(value));
    });
}

} // namespace krohost::reader
