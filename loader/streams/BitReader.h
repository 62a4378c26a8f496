#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace veltra::vtkfile {

inline std::uint64_t loadWord(const std::uint8_t* from) {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

/// The lowest `count` bits, of which there may be 0 to 63.
inline std::uint64_t lowBits(std::uint64_t bits, std::uint8_t count) {
    return bits & ((std::uint64_t{1} << count) - 1);
}

/// The bits of a deflate stream that come next, least significant first.
///
/// The highest bit of `bits` that is set is a marker. It begins as bit 63 and moves down as bits are used, so that the
/// zeros above it tell how many bits from `in` on have been used. Eight bytes from `in` on must be readable, whether or
/// not they are the stream's: who reads checks where `in` is.
struct BitReader {
    static constexpr std::uint64_t marker = std::uint64_t{1} << 63;
    static constexpr unsigned readyBitCount = 56; // at least so many after a refill

    std::uint64_t bits;
    const std::uint8_t* in;

    void refill() { refill(bits, in); }

    /// The same for a position that is kept in registers.
    static void refill(std::uint64_t& bits, const std::uint8_t*& in) {
        const auto used = static_cast<unsigned>(std::countl_zero(bits));
        in += used / 8;
        bits = (loadWord(in) | marker) >> used % 8;
    }

    unsigned take(unsigned count) {
        const auto taken = static_cast<unsigned>(lowBits(bits, static_cast<std::uint8_t>(count)));
        bits >>= count;
        return taken;
    }

    /// One past the last byte of which a bit has been used.
    const std::uint8_t* end() const { return in + (std::countl_zero(bits) + 7) / 8; }
};

} // namespace veltra::vtkfile
