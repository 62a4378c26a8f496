/// The alphabet of base64 text as look-up tables, indexed by a character's code.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace veltra::dataio {

/// What a character is: the value of its six bits, or one of these.
enum Base64Class : std::uint8_t { Base64Blank = 64, Base64Padding = 65, Base64Foreign = 66 };

constexpr std::array<std::uint8_t, 256> makeBase64Classes() {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    static_assert(alphabet.size() == 64);
    std::array<std::uint8_t, 256> classes{};
    classes.fill(Base64Foreign);
    for (const char blank : {' ', '\t', '\n', '\v', '\f', '\r'})
        classes[static_cast<std::uint8_t>(blank)] = Base64Blank;
    classes['='] = Base64Padding;
    for (std::size_t value = 0; value < alphabet.size(); ++value)
        classes[static_cast<std::uint8_t>(alphabet[value])] = static_cast<std::uint8_t>(value);
    return classes;
}

inline constexpr std::array<std::uint8_t, 256> base64Classes = makeBase64Classes();

/// Set in a table entry, and so in the sum of four, when a character is not of the alphabet.
inline constexpr std::uint32_t base64NotInAlphabet = 0xFF000000;

/// One table for each place in a group. The sum of a group's four entries holds its first byte in bits 0 to 7, its
/// second in bits 8 to 15 and its third in bits 16 to 23, as they follow each other in a little-endian word.
using Base64PlaceTable = std::array<std::uint32_t, 256>;

constexpr Base64PlaceTable makeBase64PlaceTable(unsigned place) {
    Base64PlaceTable table{};
    for (std::size_t code = 0; code < table.size(); ++code) {
        const std::uint32_t bits = std::uint32_t{base64Classes[code]} << (18 - 6 * place);
        const std::uint32_t swapped = (bits >> 16 & 0xFF) | (bits & 0xFF00) | (bits & 0xFF) << 16;
        table[code] = base64Classes[code] < 64 ? swapped : base64NotInAlphabet;
    }
    return table;
}

alignas(64) inline constexpr std::array<Base64PlaceTable, 4> base64Places{
    makeBase64PlaceTable(0), makeBase64PlaceTable(1), makeBase64PlaceTable(2), makeBase64PlaceTable(3)};

} // namespace veltra::dataio
