#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace veltra::vtkfile {

/// Whether binary data of a file with this byte order must be reversed on this machine.
constexpr bool needsSwap(bool bigEndian) {
    return bigEndian != (std::endian::native == std::endian::big);
}

template <std::size_t ByteCount>
struct UnsignedOfSize;
template <>
struct UnsignedOfSize<2> {
    using type = std::uint16_t;
};
template <>
struct UnsignedOfSize<4> {
    using type = std::uint32_t;
};
template <>
struct UnsignedOfSize<8> {
    using type = std::uint64_t;
};

/// The value whose bytes are in the opposite order.
template <class T>
T reverseBytes(T value) {
    if constexpr (sizeof(T) == 1) {
        return value;
    } else {
        const auto bits = std::bit_cast<typename UnsignedOfSize<sizeof(T)>::type>(value);
        if constexpr (sizeof(T) == 2)
            return std::bit_cast<T>(__builtin_bswap16(bits));
        else if constexpr (sizeof(T) == 4)
            return std::bit_cast<T>(__builtin_bswap32(bits));
        else
            return std::bit_cast<T>(__builtin_bswap64(bits));
    }
}

/// Reverses the bytes of each of the values.
template <class T>
void reverseAll(T* values, std::size_t count) {
    for (std::size_t index = 0; index < count; ++index)
        values[index] = reverseBytes(values[index]);
}

} // namespace veltra::vtkfile
