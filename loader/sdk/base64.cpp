#include "loader/sdk/base64.h"

#include "loader/sdk/base64Blocks.h"
#include "loader/sdk/base64Tables.h"

#include <bit>
#include <cstring>

namespace veltra::dataio {

namespace {

// Whole runs are stored word by word, straight from the tables.
static_assert(std::endian::native == std::endian::little);

using Text = std::span<const std::uint8_t>;

/// The bytes of a group in bits 0 to 23, as base64Places tells.
std::uint32_t sumOfGroup(const std::uint8_t* group) {
    return base64Places[0][group[0]] | base64Places[1][group[1]] | base64Places[2][group[2]] |
           base64Places[3][group[3]];
}

/// Decodes blocks, then pairs of groups, as long as they hold nothing but alphabet and a store of eight bytes has room.
void decodeRun(Text text, std::span<std::uint8_t> dst, Base64Result& result) {
    const std::size_t inBlocks =
        decodeBase64Blocks(text.subspan(result.charactersConsumed), dst.subspan(result.bytesProduced));
    result.charactersConsumed += inBlocks;
    result.bytesProduced += inBlocks / 4 * 3;
    const std::uint8_t* from = text.data() + result.charactersConsumed;
    std::uint8_t* to = dst.data() + result.bytesProduced;
    const std::size_t pairsOfText = (text.size() - result.charactersConsumed) / 8;
    const std::size_t room = dst.size() - result.bytesProduced;
    std::size_t pairCount = room < 8 ? 0 : std::min(pairsOfText, (room - 2) / 6);
    for (; pairCount > 0; --pairCount, from += 8, to += 6) {
        const std::uint32_t first = sumOfGroup(from);
        const std::uint32_t second = sumOfGroup(from + 4);
        if ((first | second) & base64NotInAlphabet)
            break;
        const std::uint64_t bytes = first | std::uint64_t{second} << 24;
        std::memcpy(to, &bytes, sizeof bytes);
    }
    result.charactersConsumed = static_cast<std::size_t>(from - text.data());
    result.bytesProduced = static_cast<std::size_t>(to - dst.data());
}

/// The next group with its blanks and padding.
struct Group {
    std::size_t end;       // after its last character; where there is no whole group, at what stopped it
    std::size_t byteCount; // 1 to 3, or 0 where there is no whole group
    std::uint32_t bits;    // its bytes in bits 23 to 0
};

Group nextGroup(Text text, std::size_t begin) {
    std::uint32_t bits = 0;
    std::size_t length = 0;
    std::size_t padding = 0;
    for (std::size_t index = begin; index < text.size(); ++index) {
        const std::uint8_t kind = base64Classes[text[index]];
        if (kind == Base64Blank)
            continue;
        const bool isPadding = kind == Base64Padding;
        if (kind == Base64Foreign || (isPadding ? length < 2 : padding > 0))
            return {index, 0, 0};
        bits = bits << 6 | (isPadding ? 0U : kind);
        padding += isPadding ? 1 : 0;
        if (++length == 4)
            return {index + 1, 3 - padding, bits};
    }
    return {text.size(), 0, 0};
}

} // namespace

Base64Result decodeBase64(Text text, std::span<std::uint8_t> dst) {
    Base64Result result{0, 0, 0};
    for (;;) {
        decodeRun(text, dst, result);
        const Group group = nextGroup(text, result.charactersConsumed);
        const bool hasRoom = group.byteCount <= dst.size() - result.bytesProduced;
        if (group.byteCount == 0 || !hasRoom) {
            result.stopIndex = hasRoom ? group.end : result.charactersConsumed;
            return result;
        }
        for (std::size_t place = 0; place < group.byteCount; ++place)
            dst[result.bytesProduced++] = static_cast<std::uint8_t>(group.bits >> (16 - 8 * place));
        result.charactersConsumed = group.end;
    }
}

bool isBase64Blank(std::uint8_t character) {
    return base64Classes[character] == Base64Blank;
}

} // namespace veltra::dataio
