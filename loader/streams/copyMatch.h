#pragma once

#include "loader/streams/BitReader.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace veltra::vtkfile {

/// Matches that two words copied one after the other are enough for.
inline constexpr std::size_t shortestPlainDistance = sizeof(std::uint64_t);
inline constexpr std::size_t longestPlainLength = 2 * sizeof(std::uint64_t);

/// Copies a match, and up to seven bytes more than that.
inline void copyMatch(std::uint8_t* out, std::size_t distance, std::size_t length) {
    const std::uint8_t* from = out - distance;
    std::uint8_t* const end = out + length;
    const auto copyWord = [&] {
        const std::uint64_t word = loadWord(from);
        std::memcpy(out, &word, sizeof word);
    };
    for (; distance < shortestPlainDistance && out < end; distance *= 2) { // what repeats does so twice as far away
        copyWord();
        out += distance;
    }
    for (; out < end; out += 8, from += 8)
        copyWord();
}

} // namespace veltra::vtkfile
