#include "loader/streams/codeLengths.h"

#include "loader/streams/HuffmanCode.h"

namespace veltra::vtkfile {

namespace {

constexpr unsigned longestLengthCode = 7;
constexpr unsigned lengthSymbolCount = 19;

using LengthTable = std::array<HuffmanCode::Found, 1 << longestLengthCode>;

/// Reads the code in which the lengths of the other codes are written. False when it is not complete.
bool readLengthTable(BitReader& reader, unsigned codeCount, LengthTable& table) {
    // The lengths of its codes come in this order.
    static constexpr std::array<std::uint8_t, lengthSymbolCount> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                       11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::array<std::uint8_t, lengthSymbolCount> lengths{};
    for (unsigned index = 0; index < codeCount; ++index) {
        if (index % 8 == 0)
            reader.refill();
        lengths[order[index]] = static_cast<std::uint8_t>(reader.take(3));
    }
    HuffmanCode code;
    if (!code.assign(lengths))
        return false;
    code.tabulate(table, {}, [](unsigned symbol, unsigned bitCount) { return HuffmanCode::Found{symbol, bitCount}; });
    return true;
}

} // namespace

bool readCodeLengths(BitReader& reader, const std::uint8_t* inEnd, CodeLengths& lengths) {
    lengths.literalCount = reader.take(5) + 257;
    lengths.distanceCount = reader.take(5) + 1;
    const unsigned lengthCodeCount = reader.take(4) + 4;
    LengthTable table;
    if (lengths.literalCount > 286 || lengths.distanceCount > 30 || !readLengthTable(reader, lengthCodeCount, table))
        return false;

    std::array<std::uint8_t, 288 + 32>& bitCounts = lengths.bitCounts;
    const std::size_t count = lengths.literalCount + lengths.distanceCount;
    for (std::size_t index = 0; index < count;) {
        reader.refill();
        if (reader.in > inEnd)
            return false;
        for (int turn = 0; turn < 4 && index < count; ++turn) { // of 14 bits at most
            const auto [symbol, bitCount] = table[reader.bits % table.size()];
            reader.bits >>= bitCount;
            if (symbol < 16) {
                bitCounts[index++] = static_cast<std::uint8_t>(symbol);
                continue;
            }
            // Three symbols stand for runs: of the length before them, and short and long ones of symbols without
            // codes.
            const std::size_t runLength = symbol == 16   ? reader.take(2) + 3
                                          : symbol == 17 ? reader.take(3) + 3
                                                         : reader.take(7) + 11;
            if (runLength > count - index || (symbol == 16 && index == 0))
                return false;
            std::fill_n(&bitCounts[index], runLength, symbol == 16 ? bitCounts[index - 1] : std::uint8_t{0});
            index += runLength;
        }
    }
    return true;
}

} // namespace veltra::vtkfile
