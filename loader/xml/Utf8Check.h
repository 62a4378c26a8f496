#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <span>

namespace veltra::vtkfile {

/// Looks through text, handed over in pieces, for the first byte that is not valid UTF-8.
class Utf8Check {
public:
    struct Invalid {
        std::uint64_t position;
        std::uint8_t byte;
    };

    /// `position` is that of the first of the next bytes. Of a character that is broken off or has no such form, the
    /// first byte is the invalid one; one that the bytes end within may go on in the next.
    std::optional<Invalid> check(std::span<const std::uint8_t> bytes, std::uint64_t position) {
        const auto both = [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a | b); };
        if (missing_ == 0 && std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0}, both) < 0x80)
            return std::nullopt;
        for (const std::uint8_t byte : bytes) {
            if (missing_ == 0 && !begin({position, byte}))
                return Invalid{position, byte};
            if (first_.position != position && missing_ > 0 && !goOn(byte))
                return first_;
            ++position;
        }
        return std::nullopt;
    }

private:
    /// False for a byte that begins no character.
    bool begin(Invalid first) {
        const std::uint8_t byte = first.byte;
        first_ = first;
        missing_ = byte < 0x80 ? 0 : byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
        // No longer form than needed, no halves of surrogate pairs, nothing above U+10FFFF.
        least_ = byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80;
        most_ = byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF;
        return byte < 0x80 || (byte >= 0xC2 && byte <= 0xF4);
    }

    bool goOn(std::uint8_t byte) {
        const bool isValid = byte >= least_ && byte <= most_;
        least_ = 0x80;
        most_ = 0xBF;
        --missing_;
        return isValid;
    }

    Invalid first_{};      // of the character that the last byte belongs to
    unsigned missing_ = 0; // bytes of that character
    std::uint8_t least_ = 0;
    std::uint8_t most_ = 0;
};

} // namespace veltra::vtkfile
