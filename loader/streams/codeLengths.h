#pragma once

#include "loader/streams/BitReader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace veltra::vtkfile {

/// How many bits the codes of a block's literals and lengths have, by symbol, and then those of its distances.
struct CodeLengths {
    std::size_t literalCount = 288;
    std::size_t distanceCount = 32;
    std::array<std::uint8_t, 288 + 32> bitCounts; ///< 0 for a symbol without a code

    constexpr std::span<const std::uint8_t> literals() const { return std::span(bitCounts).first(literalCount); }
    constexpr std::span<const std::uint8_t> distances() const {
        return std::span(bitCounts).subspan(literalCount, distanceCount);
    }
};

/// Of a block that uses deflate's fixed codes.
inline constexpr CodeLengths fixedCodeLengths = [] {
    CodeLengths lengths{};
    std::uint8_t* next = lengths.bitCounts.data();
    for (const auto& [symbolCount, bitCount] : {std::pair{144, 8}, {112, 9}, {24, 7}, {8, 8}, {32, 5}})
        next = std::fill_n(next, symbolCount, static_cast<std::uint8_t>(bitCount));
    return lengths;
}();

/// Reads them from the header of a block that has codes of its own. False when the header is not one that zlib takes,
/// or does not end before `inEnd`; up to sixteen bytes after that may have been read.
bool readCodeLengths(BitReader& reader, const std::uint8_t* inEnd, CodeLengths& lengths);

} // namespace veltra::vtkfile
