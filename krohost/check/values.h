/// Decoded bytes as numbers.
#pragma once

#include "krohost/check/Finding.h"
#include "krohost/vtu/decode.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace krohost::check {

template <class Value, class Use>
void forEach(std::span<const std::byte> bytes, const Use& use) {
    for (Value value; bytes.size() >= sizeof value; bytes = bytes.subspan(sizeof value)) {
        std::memcpy(&value, bytes.data(), sizeof value);
        use(value);
    }
}

/// Nothing for whole numbers.
template <class Use>
void forEachReal(vtu::ElementType type, std::span<const std::byte> bytes, const Use& use) {
    if (type == vtu::ElementType::Float32)
        forEach<float>(bytes, use);
    else if (type == vtu::ElementType::Float64)
        forEach<double>(bytes, use);
}

/// As 64 bits, where the largest unsigned ones become negative; nothing for others than whole numbers.
template <class Use>
void forEachInteger(vtu::ElementType type, std::span<const std::byte> bytes, const Use& use) {
    const auto widened = [&use](auto value) { use(static_cast<std::int64_t>(value)); };
    switch (type) {
    case vtu::ElementType::Int8:
        return forEach<std::int8_t>(bytes, widened);
    case vtu::ElementType::UInt8:
        return forEach<std::uint8_t>(bytes, widened);
    case vtu::ElementType::Int16:
        return forEach<std::int16_t>(bytes, widened);
    case vtu::ElementType::UInt16:
        return forEach<std::uint16_t>(bytes, widened);
    case vtu::ElementType::Int32:
        return forEach<std::int32_t>(bytes, widened);
    case vtu::ElementType::UInt32:
        return forEach<std::uint32_t>(bytes, widened);
    case vtu::ElementType::Int64:
    case vtu::ElementType::UInt64:
        return forEach<std::int64_t>(bytes, widened);
    default:
        return;
    }
}

/// Compares the number of values with what is needed, where that is known.
void checkValueCount(const vtu::Array& array, std::uint64_t heldCount, Findings& findings);
void reportFaults(const vtu::Array& array, const vtu::Decoded& decoded, Findings& findings);

} // namespace krohost::check
