#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace veltra::vtkfile {

/// A canonical Huffman code of deflate's that uses every sequence of bits.
class HuffmanCode {
public:
    struct Found {
        unsigned symbol;
        unsigned bitCount;
    };

    /// From the length of each symbol's code; 0 is for symbols without one. False when this is no complete code.
    bool assign(std::span<const std::uint8_t> lengths) {
        counts_.fill(0);
        for (const std::uint8_t length : lengths)
            ++counts_[length];
        counts_[0] = 0;
        std::array<std::uint16_t, longest + 1> next;
        unsigned symbolCount = 0;
        unsigned used = 0;
        for (unsigned length = 1; length <= longest; ++length) {
            next[length] = static_cast<std::uint16_t>(symbolCount);
            symbolCount += counts_[length];
            used += static_cast<unsigned>(counts_[length]) << (longest - length);
        }
        if (used != 1u << longest)
            return false;
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol)
            if (lengths[symbol] != 0)
                symbols_[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
        return true;
    }

    /// Writes the entry of the code that they begin with for all values of as many bits as `table` has room for;
    /// `longer` where the code has more bits than that.
    template <class Entry, std::size_t Size, class EntryOf>
    void tabulate(std::array<Entry, Size>& table, Entry longer, EntryOf entryOf) const {
        // Codes come in order of their lengths. The table holds those of up to `length` bits, once for each value of
        // these bits, and doubles for the next.
        std::size_t size = 1;
        std::size_t index = 0;
        const std::uint16_t* symbol = symbols_.data();
        for (unsigned length = 1; size < table.size(); ++length) {
            std::copy_n(table.begin(), size, table.begin() + static_cast<std::ptrdiff_t>(size));
            size *= 2;
            for (unsigned count = counts_[length]; count > 0; --count) {
                table[index] = entryOf(*symbol++, length);
                index = following(index, size);
            }
        }
        for (; index != 0; index = following(index, size))
            table[index] = longer;
    }

    /// The symbol whose code comes next.
    Found find(std::uint64_t bits) const {
        unsigned code = 0;
        unsigned first = 0; // code of this length
        const std::uint16_t* symbol = symbols_.data();
        for (unsigned length = 1;; ++length) {
            code += bits & 1;
            if (code < first + counts_[length])
                return {symbol[code - first], length};
            symbol += counts_[length];
            first = (first + counts_[length]) * 2;
            code *= 2;
            bits >>= 1;
        }
    }

private:
    static constexpr unsigned longest = 15;

    /// The next code of as many bits as `size` has values, first bit least significant; 0 after the last.
    static std::size_t following(std::size_t code, std::size_t size) {
        const std::size_t highestZero = std::bit_floor(~code & (size - 1));
        return highestZero == 0 ? 0 : (code & (highestZero - 1)) | highestZero;
    }

    std::array<std::uint16_t, longest + 1> counts_; // codes of each length
    std::array<std::uint16_t, 288> symbols_;        // in the order of their codes
};

} // namespace veltra::vtkfile
