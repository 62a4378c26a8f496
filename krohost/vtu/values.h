/// Decoded bytes as numbers.
#pragma once

#include "krohost/vtu/ElementType.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace krohost::vtu {

template <class Value, class Use>
void forEachOf(std::span<const std::byte> bytes, const Use& use) {
    for (Value value; bytes.size() >= sizeof value; bytes = bytes.subspan(sizeof value)) {
        std::memcpy(&value, bytes.data(), sizeof value);
        use(value);
    }
}

/// Calls `use` with every value, in its own type.
template <class Use>
void forEachValue(ElementType type, std::span<const std::byte> bytes, const Use& use) {
    switch (type) {
    case ElementType::Int8:
        return forEachOf<std::int8_t>(bytes, use);
    case ElementType::UInt8:
        return forEachOf<std::uint8_t>(bytes, use);
    case ElementType::Int16:
        return forEachOf<std::int16_t>(bytes, use);
    case ElementType::UInt16:
        return forEachOf<std::uint16_t>(bytes, use);
    case ElementType::Int32:
        return forEachOf<std::int32_t>(bytes, use);
    case ElementType::UInt32:
        return forEachOf<std::uint32_t>(bytes, use);
    case ElementType::Int64:
        return forEachOf<std::int64_t>(bytes, use);
    case ElementType::UInt64:
        return forEachOf<std::uint64_t>(bytes, use);
    case ElementType::Float32:
        return forEachOf<float>(bytes, use);
    case ElementType::Float64:
        return forEachOf<double>(bytes, use);
    }
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

} // namespace krohost::vtu
