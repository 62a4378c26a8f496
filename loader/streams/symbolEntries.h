/// What the inflater's tables say of the symbols of deflate.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace veltra::vtkfile {

/// Of the lengths that symbols 257 and on stand for, and of the distances: the least, and the bits that add to it.
inline constexpr std::array<std::uint16_t, 29> leastLengths{
    3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 15, 17, 19, 23, 27, 31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
inline constexpr std::array<std::uint8_t, 29> lengthExtraBits{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                                              2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
inline constexpr std::array<std::uint16_t, 30> leastDistances{
    1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
    193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
inline constexpr std::array<std::uint8_t, 30> distanceExtraBits{0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                                                6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};
inline constexpr unsigned endOfBlock = 256;
inline constexpr unsigned firstLength = 257;

/// What the next ten bits mean in the code of literals and lengths: a literal, a length, or something rare that has to
/// be looked up in the code itself (a longer code, the end of the block, a symbol that is none).
///
/// Each accessor is one or two instructions and may be called for an entry of another kind: what it gives then is
/// harmless, as said there.
struct LiteralEntry {
    static constexpr unsigned tableBits = 10;

    // Where the fields begin, in bits.
    static constexpr unsigned literalCodeBitsAt = 0; // 8 bits; of a length 0
    static constexpr unsigned byteAt = 8;            // 8 bits, of a literal
    static constexpr unsigned matchBitsAt = 8;       // 8 bits, of a length
    static constexpr unsigned leastLengthAt = 16;    // 9 bits, of a length
    static constexpr unsigned matchCodeBitsAt = 25;  // 5 bits, of a length
    static constexpr unsigned rareAt = 30;
    static constexpr unsigned literalAt = 31;

    static constexpr LiteralEntry rare() { return {1u << rareAt}; }
    static constexpr LiteralEntry literal(unsigned byte, unsigned codeBits) {
        return {1u << literalAt | byte << byteAt | codeBits << literalCodeBitsAt};
    }
    static constexpr LiteralEntry match(unsigned least, unsigned codeBits, unsigned extraBits) {
        return {codeBits << matchCodeBitsAt | least << leastLengthAt | (codeBits + extraBits) << matchBitsAt};
    }
    static constexpr LiteralEntry of(unsigned symbol, unsigned codeBits) {
        if (symbol < endOfBlock)
            return literal(symbol, codeBits);
        if (symbol == endOfBlock || symbol - firstLength >= leastLengths.size())
            return rare();
        return match(leastLengths[symbol - firstLength], codeBits, lengthExtraBits[symbol - firstLength]);
    }

    /// 1 for a literal, else 0: the bytes that it adds to the output.
    std::uint32_t literalCount() const { return word >> literalAt; }
    /// All bits set for a literal, else none.
    std::uint32_t literalMask() const {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(word) >> literalAt);
    }
    bool isRare() const { return word >= 1u << rareAt; } // and for a literal
    std::uint8_t byte() const { return static_cast<std::uint8_t>(word >> byteAt); }
    /// The bits to use up for a literal; 0 for anything else, so that taking it for one changes nothing.
    std::uint32_t literalCodeBits() const { return word % 64; }
    /// The bits of a length, with the extra ones, and of its code alone.
    std::uint8_t matchBits() const { return static_cast<std::uint8_t>(word >> matchBitsAt); }
    std::uint32_t matchCodeBits() const { return (word >> matchCodeBitsAt) % 64; }
    std::uint32_t leastLength() const { return (word >> leastLengthAt) % 512; }

    bool operator==(const LiteralEntry&) const = default;

    std::uint32_t word;
};

/// What the next eight bits mean in the code of distances; one whose code is longer has to be looked up in the code
/// itself.
struct DistanceEntry {
    static constexpr unsigned tableBits = 8;

    // Where the fields begin, in bits.
    static constexpr unsigned allBitsAt = 0;        // 8 bits
    static constexpr unsigned codeBitsAt = 8;       // 8 bits
    static constexpr unsigned leastDistanceAt = 16; // 16 bits

    static constexpr DistanceEntry rare() { return {0}; }
    static constexpr DistanceEntry of(unsigned symbol, unsigned codeBits) {
        if (symbol >= leastDistances.size())
            return rare();
        return {leastDistances[symbol] * (1u << leastDistanceAt) | codeBits << codeBitsAt |
                (codeBits + distanceExtraBits[symbol]) << allBitsAt};
    }
    /// A distance that is not in the stream and takes no bits of it.
    static constexpr DistanceEntry without(std::uint32_t distance) { return {distance << leastDistanceAt}; }

    bool isRare() const { return word == 0; }
    /// The bits of a distance, with the extra ones, and of its code alone.
    std::uint8_t allBits() const { return static_cast<std::uint8_t>(word); }
    std::uint32_t codeBits() const { return (word >> codeBitsAt) % 64; }
    std::uint32_t leastDistance() const { return word >> leastDistanceAt; }

    std::uint32_t word;
};

} // namespace veltra::vtkfile
